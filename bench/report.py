#!/usr/bin/env python3
"""Runs every benchmark program once and prints the README's performance table.

Each row pairs one of our operations with a peer library doing the same work
in the same run; the ratio is the peer's time over ours, so above 1 means we
are faster. libjpeg-turbo chooses its SIMD code at run time (AVX2 here); the
libjpeg-turbo peers are run a second time with JSIMD_FORCESSE2=1, which
holds them to SSE2, the instruction set our plain x86-64 build uses.

usage: bench/report.py [build-dir] [--min-time SECONDS]
"""
import json
import os
import subprocess
import sys
import tempfile

build = "build"
min_time = "0.5"
args = sys.argv[1:]
while args:
    a = args.pop(0)
    if a == "--min-time":
        min_time = args.pop(0)
    else:
        build = a

UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def run(program, env_extra=None, filt=None):
    """Real time per iteration in ns, by benchmark name."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        cmd = [os.path.join(build, "bench", program), f"--benchmark_out={out.name}", "--benchmark_out_format=json",
               f"--benchmark_min_time={min_time}"]
        if filt:
            cmd.append(f"--benchmark_filter={filt}")
        env = dict(os.environ, **(env_extra or {}))
        subprocess.run(cmd, check=True, stdout=subprocess.DEVNULL, env=env)
        data = json.load(open(out.name))
    return {b["name"]: b["real_time"] * UNIT_NS[b["time_unit"]] for b in data["benchmarks"]}


def fmt(ns):
    if ns >= 1e6:
        return f"{ns / 1e6:.2f} ms"
    if ns >= 1e3:
        return f"{ns / 1e3:.1f} µs"
    return f"{ns:.0f} ns"


# (program, our benchmark, peer benchmark, what is compared, peer uses libjpeg-turbo SIMD)
ROWS = [
    ("bench_frame", "Sub128_8u16s/1/real_time", "BM_Memcpy16sPlane/1/real_time",
     "Level shift 8u→16s, 4096², 1 thread, vs memcpy of the 16-bit plane", False),
    ("bench_frame", "Sub128_8u16s/2/real_time", "BM_Memcpy16sPlane/2/real_time",
     "Level shift 8u→16s, 4096², 2 threads, vs memcpy on 2 threads", False),
    ("bench_frame", "Add128_16s8u/1/real_time", "BM_Memcpy16sPlane/1/real_time",
     "Level shift 16s→8u, 4096², 1 thread, vs memcpy of the 16-bit plane", False),
    ("bench_frame", "Add128_16s8u/2/real_time", "BM_Memcpy16sPlane/2/real_time",
     "Level shift 16s→8u, 4096², 2 threads, vs memcpy on 2 threads", False),
    ("bench_colour", "BM_Ours_RGBToYCbCr_C3P3R/threads:1/real_time", "BM_Peer_tjEncodeYUVPlanes_444/real_time",
     "RGB→YCbCr full rate, 4096×2160, 1 thread, vs tjEncodeYUVPlanes 4:4:4", True),
    ("bench_colour", "BM_Ours_RGBToYCbCr_C3P3R/threads:2/real_time", "BM_Peer_tjEncodeYUVPlanes_444/real_time",
     "RGB→YCbCr full rate, 2 threads, vs tjEncodeYUVPlanes 4:4:4", True),
    ("bench_colour", "BM_Ours_YCbCrToRGB_P3C3R/threads:1/real_time", "BM_Peer_tjDecodeYUVPlanes_444/real_time",
     "YCbCr→RGB full rate, 1 thread, vs tjDecodeYUVPlanes 4:4:4", True),
    ("bench_colour", "BM_Ours_YCbCrToRGB_P3C3R/threads:2/real_time", "BM_Peer_tjDecodeYUVPlanes_444/real_time",
     "YCbCr→RGB full rate, 2 threads, vs tjDecodeYUVPlanes 4:4:4", True),
    ("bench_colour", "BM_Ours_RGBToYCbCr422_C3P3R/threads:1/real_time", "BM_Peer_tjEncodeYUVPlanes_422/real_time",
     "RGB→YCbCr 422 fused, vs tjEncodeYUVPlanes 4:2:2", True),
    ("bench_colour", "BM_Ours_RGBToYCbCr411_C3P3R/threads:1/real_time", "BM_Peer_tjEncodeYUVPlanes_420/real_time",
     "RGB→YCbCr 411 fused, vs tjEncodeYUVPlanes 4:2:0", True),
    ("bench_colour", "BM_Ours_YCbCr422ToRGB_P3C3R/threads:1/real_time", "BM_Peer_tjDecodeYUVPlanes_422/real_time",
     "YCbCr 422→RGB, vs tjDecodeYUVPlanes 4:2:2", True),
    ("bench_colour", "BM_Ours_YCbCr411ToRGB_P3C3R/threads:1/real_time", "BM_Peer_tjDecodeYUVPlanes_420/real_time",
     "YCbCr 411→RGB, vs tjDecodeYUVPlanes 4:2:0", True),
    ("bench_sampling", "Ours/Down422_CopyY_BoxRowH2V1_CbCr", "Peer/Down422_CopyY_BoxRowH2V1_CbCr_libjpeg_downsample",
     "Box down-sampling rows H2V1 (+ Y copy), vs libjpeg's downsampler", True),
    ("bench_sampling", "Ours/Down420_CopyY_BoxRowH2V2_CbCr", "Peer/Down420_CopyY_BoxRowH2V2_CbCr_libjpeg_downsample",
     "Box down-sampling rows H2V2 (+ Y copy), vs libjpeg's downsampler", True),
    ("bench_sampling", "Ours/UpRowH2V1_Triangle", "Peer/UpH2V1_Triangle_libjpeg422_fancy_minus_plain/manual_time",
     "Triangle up-sampling rows H2V1, vs libjpeg fancy up-sampling", True),
    ("bench_sampling", "Ours/UpRowH2V2_Triangle", "Peer/UpH2V2_Triangle_libjpeg420_fancy_minus_plain/manual_time",
     "Triangle up-sampling rows H2V2, vs libjpeg fancy up-sampling", True),
    ("bench_transform", "Fwd/DCTQuantFwd8x8LS_8u16s/vqcj", "Fwd/DCTQuantFwd8x8LS_8u16s/libjpeg_fdct_islow+divide",
     "Forward DCT + quantise, photo blocks, vs jpeg_fdct_islow + divide", False),
    ("bench_transform", "Inv/DCTQuantInv8x8LS_16s8u/vqcj", "Inv/DCTQuantInv8x8LS_16s8u/libjpeg_idct_islow",
     "Dequantise + inverse DCT, photo blocks, vs jpeg_idct_islow", False),
]
for kind in ("Encode", "Decode"):
    for data in ("grey:camera.png", "rgb:astronaut.png", "noise"):
        ROWS.append(("bench_tiff", f"PackBits{kind}/{data}/vqcj", f"PackBits{kind}/{data}/libtiff",
                     f"PackBits {kind.lower()}, {data.split(':')[-1]}, vs libtiff", False))

results, sse2 = {}, {}
for program in sorted({r[0] for r in ROWS}):
    results[program] = run(program)
    if any(r[0] == program and r[4] for r in ROWS):
        sse2[program] = run(program, {"JSIMD_FORCESSE2": "1"}, "Peer")

cpu = next((l.split(":", 1)[1].strip() for l in open("/proc/cpuinfo") if l.startswith("model name")), "unknown CPU")
print(f"Measured in one run on {cpu}, {os.cpu_count()} cores, `bench/report.py {build}`.\n")
print("| Operation | vqcj | Peer | Peer / vqcj | Peer held to SSE2 | Peer / vqcj |")
print("|---|---|---|---|---|---|")
for program, ours, peer, label, simd in ROWS:
    r = results[program]
    if ours not in r or peer not in r:
        print(f"| {label} | missing | | | | |")
        continue
    o, p = r[ours], r[peer]
    extra = "| | "
    if simd and peer in sse2.get(program, {}):
        s = sse2[program][peer]
        extra = f"| {fmt(s)} | {s / o:.2f} "
    print(f"| {label} | {fmt(o)} | {fmt(p)} | {p / o:.2f} {extra}|")
