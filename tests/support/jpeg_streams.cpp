#include "support/jpeg_streams.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <jpeglib.h>

namespace vqcjtest {

namespace {

void fail(j_common_ptr cinfo) {
    char msg[JMSG_LENGTH_MAX];
    (*cinfo->err->format_message)(cinfo, msg);
    std::fprintf(stderr, "libjpeg: %s\n", msg);
    std::abort();
}

int ceilDiv(int a, int b) { return (a + b - 1) / b; }

}  // namespace

std::vector<uint8_t> makeJpeg(const uint8_t* pixels, int width, int height, int channels, const JpegOptions& opt) {
    jpeg_compress_struct c{};
    jpeg_error_mgr err{};
    c.err = jpeg_std_error(&err);
    err.error_exit = fail;
    jpeg_create_compress(&c);
    unsigned char* out = nullptr;
    unsigned long outSize = 0;
    jpeg_mem_dest(&c, &out, &outSize);
    c.image_width = static_cast<JDIMENSION>(width);
    c.image_height = static_cast<JDIMENSION>(height);
    c.input_components = channels;
    c.in_color_space = channels == 3 ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&c);
    if (opt.grey && channels == 3) jpeg_set_colorspace(&c, JCS_GRAYSCALE);
    jpeg_set_quality(&c, opt.quality, TRUE);
    c.optimize_coding = opt.optimize ? TRUE : FALSE;
    c.restart_interval = static_cast<unsigned>(opt.restartInterval);
    std::vector<jpeg_scan_info> scans;
    if (!opt.scans.empty()) {
        for (const auto& s : opt.scans) {
            jpeg_scan_info si{};
            si.comps_in_scan = s.compCount;
            for (int i = 0; i < s.compCount; ++i) si.component_index[i] = s.comps[i];
            si.Ss = s.Ss, si.Se = s.Se, si.Ah = s.Ah, si.Al = s.Al;
            scans.push_back(si);
        }
        c.scan_info = scans.data();
        c.num_scans = static_cast<int>(scans.size());
    } else if (opt.progressive) {
        jpeg_simple_progression(&c);
    }
    jpeg_start_compress(&c, TRUE);
    while (c.next_scanline < c.image_height) {
        JSAMPROW row = const_cast<uint8_t*>(pixels) + size_t(c.next_scanline) * width * channels;
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    std::vector<uint8_t> file(out, out + outSize);
    std::free(out);
    return file;
}

int JpegFile::mcusPerRow(const JpegScan& s) const {
    return s.compCount == 1 ? comps[s.comps[0]].widthInBlocks : ceilDiv(width, 8 * maxH);
}
int JpegFile::mcuRows(const JpegScan& s) const {
    return s.compCount == 1 ? comps[s.comps[0]].heightInBlocks : ceilDiv(height, 8 * maxV);
}

std::vector<std::array<int, 3>> JpegFile::mcuBlocks(const JpegScan& s, int m) const {
    const int per = mcusPerRow(s), mx = m % per, my = m / per;
    if (s.compCount == 1) return {{s.comps[0], mx, my}};
    std::vector<std::array<int, 3>> out;
    for (int i = 0; i < s.compCount; ++i) {
        const JpegComponent& c = comps[s.comps[i]];
        for (int y = 0; y < c.v; ++y)
            for (int x = 0; x < c.h; ++x) out.push_back({s.comps[i], mx * c.h + x, my * c.v + y});
    }
    return out;
}

JpegFile readJpeg(const std::vector<uint8_t>& file) {
    JpegFile f;
    JpegHuffTable dc[4], ac[4];
    int restart = 0;
    size_t p = 2;
    while (p + 4 <= file.size()) {
        if (file[p] != 0xFF) throw std::runtime_error("marker expected");
        const int m = file[p + 1];
        if (m == 0xD9) break;
        const size_t len = size_t(file[p + 2]) << 8 | file[p + 3];
        const uint8_t* seg = file.data() + p + 4;
        const size_t body = len - 2;
        if (m == 0xC0 || m == 0xC1 || m == 0xC2) {
            f.height = seg[1] << 8 | seg[2];
            f.width = seg[3] << 8 | seg[4];
            for (int i = 0; i < seg[5]; ++i) {
                JpegComponent c;
                c.id = seg[6 + 3 * i];
                c.h = seg[7 + 3 * i] >> 4;
                c.v = seg[7 + 3 * i] & 15;
                f.maxH = std::max(f.maxH, c.h);
                f.maxV = std::max(f.maxV, c.v);
                f.comps.push_back(c);
            }
        } else if (m == 0xC4) {
            for (size_t q = 0; q < body;) {
                const int tc = seg[q] >> 4, th = seg[q] & 15;
                JpegHuffTable& t = tc ? ac[th] : dc[th];
                t = JpegHuffTable{};
                t.present = true;
                int n = 0;
                for (int i = 0; i < 16; ++i) n += t.bits[i] = seg[q + 1 + i];
                for (int i = 0; i < n; ++i) t.vals[i] = seg[q + 17 + i];
                q += 17 + n;
            }
        } else if (m == 0xDD) {
            restart = seg[0] << 8 | seg[1];
        } else if (m == 0xDA) {
            JpegScan s;
            s.compCount = seg[0];
            for (int i = 0; i < s.compCount; ++i) {
                for (size_t k = 0; k < f.comps.size(); ++k)
                    if (f.comps[k].id == seg[1 + 2 * i]) s.comps[i] = static_cast<int>(k);
                s.td[i] = seg[2 + 2 * i] >> 4;
                s.ta[i] = seg[2 + 2 * i] & 15;
            }
            const uint8_t* t = seg + 1 + 2 * s.compCount;
            s.Ss = t[0], s.Se = t[1], s.Ah = t[2] >> 4, s.Al = t[2] & 15;
            for (int i = 0; i < 4; ++i) s.dc[i] = dc[i], s.ac[i] = ac[i];
            s.restartInterval = restart;
            size_t q = p + 2 + len;
            std::vector<uint8_t> cur;
            for (;;) {
                if (file[q] == 0xFF && file[q + 1] != 0) {
                    if (file[q + 1] >= 0xD0 && file[q + 1] <= 0xD7) {
                        s.segments.push_back(cur);
                        cur.clear();
                        s.data.insert(s.data.end(), file.begin() + q, file.begin() + q + 2);
                        q += 2;
                        continue;
                    }
                    break;
                }
                s.data.push_back(file[q]);
                cur.push_back(file[q]);
                ++q;
            }
            s.segments.push_back(cur);
            s.data.insert(s.data.end(), file.begin() + q, file.begin() + q + 2);
            f.scans.push_back(std::move(s));
            p = q;
            continue;
        }
        p += 2 + len;
    }
    for (auto& c : f.comps) {
        c.widthInBlocks = ceilDiv(f.width * c.h, 8 * f.maxH);
        c.heightInBlocks = ceilDiv(f.height * c.v, 8 * f.maxV);
        c.stride = ceilDiv(c.widthInBlocks, c.h) * c.h;
        c.rows = ceilDiv(c.heightInBlocks, c.v) * c.v;
        c.blocks.assign(size_t(c.stride) * c.rows * 64, 0);
    }

    jpeg_decompress_struct d{};
    jpeg_error_mgr err{};
    d.err = jpeg_std_error(&err);
    err.error_exit = fail;
    jpeg_create_decompress(&d);
    jpeg_mem_src(&d, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&d, TRUE);
    jvirt_barray_ptr* arrays = jpeg_read_coefficients(&d);
    for (size_t ci = 0; ci < f.comps.size(); ++ci) {
        JpegComponent& c = f.comps[ci];
        for (int by = 0; by < c.rows; ++by) {
            JBLOCKARRAY row = (*d.mem->access_virt_barray)(reinterpret_cast<j_common_ptr>(&d), arrays[ci],
                                                          static_cast<JDIMENSION>(by), 1, FALSE);
            for (int bx = 0; bx < c.stride; ++bx)
                for (int k = 0; k < 64; ++k) c.block(bx, by)[k] = row[0][bx][k];
        }
    }
    jpeg_finish_decompress(&d);
    jpeg_destroy_decompress(&d);
    return f;
}

}  // namespace vqcjtest
