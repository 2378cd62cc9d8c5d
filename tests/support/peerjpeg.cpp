#include "support/peerjpeg.h"

#include <cmath>
#include <cstdio>

#include <jpeglib.h>

#include "jpegerr.h"

namespace vqcjtest {

std::vector<uint8_t> peerEncode(const uint8_t* pixels, int width, int height, int channels, const PeerOptions& opt) {
    jpeg_compress_struct c{};
    vqcjphoto::JpegErrorJump err;
    c.err = err.install();
    unsigned char* mem = nullptr;
    unsigned long size = 0;
    std::vector<jpeg_scan_info> scans;
    if (setjmp(err.jump)) {
        char msg[JMSG_LENGTH_MAX];
        c.err->format_message(reinterpret_cast<j_common_ptr>(&c), msg);
        std::fprintf(stderr, "libjpeg: %s\n", msg);
        jpeg_destroy_compress(&c);
        std::free(mem);
        return {};
    }
    jpeg_create_compress(&c);
    jpeg_mem_dest(&c, &mem, &size);
    c.image_width = width;
    c.image_height = height;
    c.input_components = channels;
    c.in_color_space = channels == 3 ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&c);
    if (opt.gray) jpeg_set_colorspace(&c, JCS_GRAYSCALE);
    jpeg_set_quality(&c, opt.quality, TRUE);
    if (c.num_components == 3) c.comp_info[0].h_samp_factor = opt.h, c.comp_info[0].v_samp_factor = opt.v;
    c.optimize_coding = opt.optimize;
    c.restart_interval = opt.restart;
    if (!opt.scans.empty()) {
        for (const PeerScan& s : opt.scans) {
            jpeg_scan_info i{};
            i.comps_in_scan = static_cast<int>(s.comps.size());
            for (size_t k = 0; k < s.comps.size(); ++k) i.component_index[k] = s.comps[k];
            i.Ss = s.ss, i.Se = s.se, i.Ah = s.ah, i.Al = s.al;
            scans.push_back(i);
        }
        c.scan_info = scans.data();
        c.num_scans = static_cast<int>(scans.size());
    } else if (opt.progressive) {
        jpeg_simple_progression(&c);
    }
    jpeg_start_compress(&c, TRUE);
    const int stride = width * channels;
    while (c.next_scanline < c.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(pixels + size_t(c.next_scanline) * stride);
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    std::vector<uint8_t> out(mem, mem + size);
    std::free(mem);
    return out;
}

PeerDecoded peerDecode(const std::vector<uint8_t>& file, int scaleDenom) {
    PeerDecoded r;
    jpeg_decompress_struct d{};
    vqcjphoto::JpegErrorJump err;
    d.err = err.install();
    if (setjmp(err.jump)) {
        jpeg_destroy_decompress(&d);
        r.ok = false;
        return r;
    }
    // Pixels.
    jpeg_create_decompress(&d);
    jpeg_mem_src(&d, file.data(), file.size());
    jpeg_read_header(&d, TRUE);
    d.scale_num = 1;
    d.scale_denom = scaleDenom;
    jpeg_start_decompress(&d);
    r.width = d.output_width, r.height = d.output_height, r.channels = d.output_components;
    r.pixels.resize(size_t(r.width) * r.height * r.channels);
    while (d.output_scanline < d.output_height) {
        JSAMPROW row = &r.pixels[size_t(d.output_scanline) * r.width * r.channels];
        jpeg_read_scanlines(&d, &row, 1);
    }
    jpeg_finish_decompress(&d);
    r.warnings = static_cast<int>(err.mgr.num_warnings);
    // Coefficients.
    jpeg_mem_src(&d, file.data(), file.size());
    jpeg_read_header(&d, TRUE);
    jvirt_barray_ptr* arrays = jpeg_read_coefficients(&d);
    for (int c = 0; c < d.num_components; ++c) {
        const jpeg_component_info& ci = d.comp_info[c];
        r.blocksW.push_back(ci.width_in_blocks);
        r.blocksH.push_back(ci.height_in_blocks);
        std::vector<int16_t> coef(size_t(ci.width_in_blocks) * ci.height_in_blocks * 64);
        for (JDIMENSION by = 0; by < ci.height_in_blocks; ++by) {
            JBLOCKARRAY rows = d.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&d), arrays[c], by, 1, FALSE);
            for (JDIMENSION bx = 0; bx < ci.width_in_blocks; ++bx)
                for (int k = 0; k < 64; ++k) coef[(size_t(by) * ci.width_in_blocks + bx) * 64 + k] = rows[0][bx][k];
        }
        r.coef.push_back(std::move(coef));
    }
    r.warnings += static_cast<int>(err.mgr.num_warnings);
    jpeg_finish_decompress(&d);
    jpeg_destroy_decompress(&d);
    r.ok = true;
    return r;
}

double psnr(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    double se = 0;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) se += double(a[i] - b[i]) * (a[i] - b[i]);
    return se == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * a.size() / se);
}

}  // namespace vqcjtest
