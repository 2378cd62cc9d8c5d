#!/usr/bin/env python3
"""Runs the benchmark programs and prints the README's performance table.

Each row pairs one of our operations with a peer library's best code on this
machine doing the same work in the same run; the ratio is the peer's time
over ours, so above 1 means we are faster. Every program runs a second time
with VQCJ_SIMD=sse2 for our plain routines (the peer keeps its best code).
A row may also run its peer with an environment of its own, such as
JSIMD_FORCENONE=1 for libjpeg-turbo's plain C code.

Each benchmark runs several times, the repetitions of a program's benchmarks
shuffled together so that a slow moment of the shared machine does not fall
on one side of a pair; the table gives the medians.

usage: bench/report.py [build-dir] [--min-time SECONDS] [--repetitions N]
"""
import json
import os
import re
import subprocess
import sys
import tempfile

build = "build"
min_time = "0.5"
repetitions = "5"
args = sys.argv[1:]
while args:
    a = args.pop(0)
    if a == "--min-time":
        min_time = args.pop(0)
    elif a == "--repetitions":
        repetitions = args.pop(0)
    else:
        build = a

UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def run(program, env_extra=None, names=None):
    """Median real time per iteration in ns, by benchmark name."""
    exe = os.path.join(build, "bench", program)
    if not os.path.exists(exe):
        return {}
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        cmd = [exe, f"--benchmark_out={out.name}", "--benchmark_out_format=json", f"--benchmark_min_time={min_time}",
               f"--benchmark_repetitions={repetitions}", "--benchmark_enable_random_interleaving=true"]
        if names:
            cmd.append("--benchmark_filter=^(" + "|".join(re.escape(n) for n in names) + ")$")
        env = dict(os.environ, **(env_extra or {}))
        subprocess.run(cmd, check=True, stdout=subprocess.DEVNULL, env=env)
        data = json.load(open(out.name))
    return {b["run_name"]: b["real_time"] * UNIT_NS[b["time_unit"]] for b in data["benchmarks"]
            if b.get("aggregate_name") == "median"}


def fmt(ns):
    if ns >= 1e6:
        return f"{ns / 1e6:.2f} ms"
    if ns >= 1e3:
        return f"{ns / 1e3:.1f} µs"
    return f"{ns:.0f} ns"


NONE = {"JSIMD_FORCENONE": "1"}
# (program, our benchmark, peer benchmark, what is compared, environment of the peer's run)
ROWS = [
    ("bench_frame", "Sub128_8u16s/1/real_time", "BM_Memcpy16sPlane/1/real_time",
     "Level shift 8u→16s, 4096², vs memcpy of the 16-bit plane", None),
    ("bench_frame", "Add128_16s8u/1/real_time", "BM_Memcpy16sPlane/1/real_time",
     "Level shift 16s→8u, 4096², vs memcpy of the 16-bit plane", None),
    ("bench_colour", "BM_Ours_RGBToYCbCr_C3P3R/threads:1/real_time", "BM_Peer_jsimd_rgb_ycc_convert_avx2/real_time",
     "RGB→YCbCr full rate, 4096×2160, vs jsimd_rgb_ycc_convert_avx2", None),
    ("bench_colour", "BM_Ours_YCbCrToRGB_P3C3R/threads:1/real_time", "BM_Peer_jsimd_ycc_rgb_convert_avx2/real_time",
     "YCbCr→RGB full rate, vs jsimd_ycc_rgb_convert_avx2", None),
    ("bench_colour", "BM_Ours_RGBToYCbCr422_C3P3R/threads:1/real_time",
     "BM_Peer_jsimd_rgb_ycc_convert+h2v1_downsample_avx2/real_time",
     "RGB→YCbCr 422 fused, vs AVX2 convert + h2v1 downsample", None),
    ("bench_colour", "BM_Ours_RGBToYCbCr411_C3P3R/threads:1/real_time",
     "BM_Peer_jsimd_rgb_ycc_convert+h2v2_downsample_avx2/real_time",
     "RGB→YCbCr 411 fused, vs AVX2 convert + h2v2 downsample", None),
    ("bench_colour", "BM_Ours_YCbCr422ToRGB_P3C3R/threads:1/real_time", "BM_Peer_jsimd_h2v1_merged_upsample_avx2/real_time",
     "YCbCr 422→RGB, vs jsimd_h2v1_merged_upsample_avx2", None),
    ("bench_colour", "BM_Ours_YCbCr411ToRGB_P3C3R/threads:1/real_time", "BM_Peer_jsimd_h2v2_merged_upsample_avx2/real_time",
     "YCbCr 411→RGB, vs jsimd_h2v2_merged_upsample_avx2", None),
    ("bench_colour", "BM_Ours_RGBToYCbCr_C3P3R/threads:1/real_time", "BM_Peer_tjEncodeYUVPlanes_444/real_time",
     "RGB→YCbCr full rate, vs tjEncodeYUVPlanes 4:4:4", None),
    ("bench_colour", "BM_Ours_YCbCrToRGB_P3C3R/threads:1/real_time", "BM_Peer_tjDecodeYUVPlanes_444/real_time",
     "YCbCr→RGB full rate, vs tjDecodeYUVPlanes 4:4:4", None),
    ("bench_sampling", "Ours/DownRowH2V1_Box", "Peer/DownRowH2V1_Box_jsimd_h2v1_downsample_avx2",
     "Box down-sampling rows H2V1, vs jsimd_h2v1_downsample_avx2", None),
    ("bench_sampling", "Ours/DownRowH2V2_Box", "Peer/DownRowH2V2_Box_jsimd_h2v2_downsample_avx2",
     "Box down-sampling rows H2V2, vs jsimd_h2v2_downsample_avx2", None),
    ("bench_sampling", "Ours/UpRowH2V1_Triangle", "Peer/UpRowH2V1_Triangle_jsimd_h2v1_fancy_upsample_avx2",
     "Triangle up-sampling rows H2V1, vs jsimd_h2v1_fancy_upsample_avx2", None),
    ("bench_sampling", "Ours/UpRowH2V2_Triangle", "Peer/UpRowH2V2_Triangle_jsimd_h2v2_fancy_upsample_avx2",
     "Triangle up-sampling rows H2V2, vs jsimd_h2v2_fancy_upsample_avx2", None),
    ("bench_transform", "Fwd/DCTQuantFwd8x8LS_8u16s/vqcj", "Fwd/DCTQuantFwd8x8LS_8u16s/libjpeg_avx2_convsamp+fdct_islow+quantize",
     "Level shift + forward DCT + quantise, per block, vs libjpeg-turbo's AVX2 kernels", None),
    ("bench_transform", "Inv/DCTQuantInv8x8LS_16s8u/vqcj", "Inv/DCTQuantInv8x8LS_16s8u/libjpeg_avx2_idct_islow",
     "Dequantise + inverse DCT + level shift, per block, vs jsimd_idct_islow_avx2", None),
]
for kind in ("Encode", "Decode"):
    for data in ("grey:camera.png", "rgb:astronaut.png", "noise"):
        ROWS.append(("bench_tiff", f"PackBits{kind}/{data}/vqcj", f"PackBits{kind}/{data}/libtiff",
                     f"PackBits {kind.lower()}, {data.split(':')[-1]}, vs libtiff", None))
ROWS += [
    ("bench_jpeg2k_tier1", "Tier1/Encode_LoadStore/vqcj", "Tier1/LosslessEncode_whole/openjpeg",
     "JPEG 2000 code-blocks encode, vs OpenJPEG's whole lossless encode (≈91% tier-1)", None),
    ("bench_jpeg2k_tier1", "Tier1/Decode_CodeBlock/vqcj", "Tier1/LosslessDecode_whole/openjpeg",
     "JPEG 2000 code-blocks decode, vs OpenJPEG's whole lossless decode (≈91% tier-1)", None),
    ("bench_jpeg2k_wavelet", "B53Fwd16s", "OpjB53Fwd", "JPEG 2000 5/3 forward 2D, 4096², 16s, vs OpenJPEG's DWT", None),
    ("bench_jpeg2k_wavelet", "B53Inv16s", "OpjB53Inv", "JPEG 2000 5/3 inverse 2D, 4096², 16s, vs OpenJPEG's DWT", None),
    ("bench_jpeg2k_wavelet", "D97Fwd32s", "OpjD97Fwd", "JPEG 2000 9/7 forward 2D, 4096², 32s, vs OpenJPEG's DWT", None),
    ("bench_jpeg2k_wavelet", "D97Inv32s", "OpjD97Inv", "JPEG 2000 9/7 inverse 2D, 4096², 32s, vs OpenJPEG's DWT", None),
    ("bench_texture", "BM_DecodeDXT1", "BM_DecodeDXT1Libsquish", "BC1 decode, 4096² photograph, vs libsquish", None),
    ("bench_texture", "BM_DecodeDXT5", "BM_DecodeDXT5Libsquish", "BC3 decode, vs libsquish", None),
    ("bench_texture", "BM_EncodeDXT1", "BM_EncodeDXT1LibsquishRange", "BC1 fast encode, vs libsquish range fit", None),
    ("bench_texture", "BM_EncodeDXT5", "BM_EncodeDXT5LibsquishRange", "BC3 fast encode, vs libsquish range fit", None),
    ("bench_entropy", "Encode/8x8/vqcj", "Encode/8x8/libjpeg_write_coefficients",
     "Huffman encode, 4:2:0 blocks of a 2048² photograph, vs jpeg_write_coefficients", None),
    ("bench_entropy", "Decode/8x8/vqcj", "Decode/8x8/libjpeg_read_coefficients",
     "Huffman decode, the same blocks, vs jpeg_read_coefficients", None),
    ("bench_entropy", "Progressive/Encode/vqcj", "Progressive/Encode/libjpeg_write_coefficients",
     "Progressive encode, default script with optimised tables, vs libjpeg-turbo", None),
    ("bench_entropy", "Progressive/Decode/vqcj", "Progressive/Decode/libjpeg_read_coefficients",
     "Progressive decode, default script, vs libjpeg-turbo", None),
    ("bench_mcu", "RGBToYCbCr444_MCU/fused", "RGBToYCbCr444_MCU/jsimd_rgb_ycc_convert_avx2",
     "RGB→YCbCr 444 MCU form, vs jsimd_rgb_ycc_convert_avx2", None),
    ("bench_mcu", "RGBToYCbCr422_MCU/fused", "RGBToYCbCr422_MCU/jsimd_rgb_ycc_convert+h2v1_downsample_avx2",
     "RGB→YCbCr 422 MCU form, vs AVX2 convert + h2v1 downsample", None),
    ("bench_mcu", "RGBToYCbCr411_MCU/fused", "RGBToYCbCr411_MCU/jsimd_rgb_ycc_convert+h2v2_downsample_avx2",
     "RGB→YCbCr 411 MCU form, vs AVX2 convert + h2v2 downsample", None),
    ("bench_mcu", "YCbCr444ToRGB_MCU/fused", "YCbCr444ToRGB_MCU/jsimd_ycc_rgb_convert_avx2",
     "YCbCr 444→RGB MCU form, vs jsimd_ycc_rgb_convert_avx2", None),
    ("bench_mcu", "YCbCr422ToRGB_MCU/fused", "YCbCr422ToRGB_MCU/jsimd_h2v1_upsample+ycc_rgb_convert_avx2",
     "YCbCr 422→RGB MCU form, vs AVX2 h2v1 upsample + convert", None),
    ("bench_mcu", "YCbCr411ToRGB_MCU/fused", "YCbCr411ToRGB_MCU/jsimd_h2v2_upsample+ycc_rgb_convert_avx2",
     "YCbCr 411→RGB MCU form, vs AVX2 h2v2 upsample + convert", None),
    ("bench_mcu", "IdctTo4x4/ours", "IdctTo4x4/libjpeg", "Inverse DCT to 4x4, vs libjpeg's jpeg_idct_4x4", None),
    ("bench_mcu", "IdctTo2x2/ours", "IdctTo2x2/libjpeg", "Inverse DCT to 2x2, vs libjpeg's jpeg_idct_2x2", None),
    ("bench_jpegcodec", "Encode_vqcj/90/420/real_time", "Encode_TurboJPEG/90/420/real_time",
     "JPEG codec encode, 12 MP, q90 4:2:0, vs TurboJPEG (SIMD)", None),
    ("bench_jpegcodec", "Decode_vqcj/90/420/real_time", "Decode_TurboJPEG/90/420/real_time",
     "JPEG codec decode, 12 MP, q90 4:2:0, vs TurboJPEG (SIMD)", None),
    ("bench_jpegcodec", "DecodeFastUpsample_vqcj/90/420/real_time", "DecodeFastUpsample_TurboJPEG/90/420/real_time",
     "JPEG codec decode, q90 4:2:0, replicated chroma, vs TurboJPEG TJFLAG_FASTUPSAMPLE", None),
    ("bench_jpegcodec", "Encode_vqcj/75/444/real_time", "Encode_TurboJPEG/75/444/real_time",
     "JPEG codec encode, 12 MP, q75 4:4:4, vs TurboJPEG (SIMD)", None),
    ("bench_jpegcodec", "Decode_vqcj/75/444/real_time", "Decode_TurboJPEG/75/444/real_time",
     "JPEG codec decode, 12 MP, q75 4:4:4, vs TurboJPEG (SIMD)", None),
    ("bench_jpegcodec", "Encode_vqcj/90/420/real_time", "Encode_TurboJPEG/90/420/real_time",
     "JPEG codec encode, vs TurboJPEG with JSIMD_FORCENONE=1", NONE),
    ("bench_jpegcodec", "Decode_vqcj/90/420/real_time", "Decode_TurboJPEG/90/420/real_time",
     "JPEG codec decode, vs TurboJPEG with JSIMD_FORCENONE=1", NONE),
    ("bench_jpegxr", "BM_PCT_ours", "BM_PCT_jxrlib", "JPEG XR 4x4 core transform 32s, forward + inverse, vs jxrlib", None),
]

results, sse2, peer_env = {}, {}, {}
for program in sorted({r[0] for r in ROWS}):
    results[program] = run(program, None, sorted({n for r in ROWS if r[0] == program for n in (r[1], r[2])}))
    if not results[program]:
        continue
    sse2[program] = run(program, {"VQCJ_SIMD": "sse2"}, sorted({r[1] for r in ROWS if r[0] == program}))
    for r in ROWS:
        if r[0] == program and r[4]:
            peer_env[(program, r[2])] = run(program, r[4], [r[2]]).get(r[2])

cpu = next((l.split(":", 1)[1].strip() for l in open("/proc/cpuinfo") if l.startswith("model name")), "unknown CPU")
print(f"Medians of {repetitions} runs on {cpu}, {os.cpu_count()} cores, single-threaded, `bench/report.py {build}`.\n")
print("| Operation | vqcj | Peer | Peer / vqcj | vqcj, `VQCJ_SIMD=sse2` | Peer / that |")
print("|---|---|---|---|---|---|")
for program, ours, peer, label, env in ROWS:
    r = results.get(program, {})
    p = peer_env.get((program, peer)) if env else r.get(peer)
    if ours not in r or p is None:
        continue
    o = r[ours]
    s = sse2.get(program, {}).get(ours)
    extra = f"| {fmt(s)} | {p / s:.2f} " if s else "| | "
    print(f"| {label} | {fmt(o)} | {fmt(p)} | {p / o:.2f} {extra}|")
