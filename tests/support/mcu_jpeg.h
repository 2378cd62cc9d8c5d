// Coefficient blocks of real JPEG files and libjpeg's reduced inverse DCTs,
// for the MCU tests and benchmarks. Header only, so that the benchmark can
// use it too.
#pragma once

#include <vqcj.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <jpeglib.h>

#include "jpegerr.h"

// libjpeg's reduced transforms: exported by libjpeg.so.62, declared only in
// its private headers.
extern "C" {
void jpeg_idct_4x4(j_decompress_ptr, jpeg_component_info*, JCOEFPTR, JSAMPARRAY, JDIMENSION);
void jpeg_idct_2x2(j_decompress_ptr, jpeg_component_info*, JCOEFPTR, JSAMPARRAY, JDIMENSION);
}

namespace vqcjtest {

// Quantised blocks in natural order, each with the inverse table of its
// component.
struct CoefBlocks {
    std::vector<std::array<Vqc16s, 64>> blocks;
    std::vector<std::array<Vqc16u, 64>> tables;
    std::vector<int> tableOf;  // per block
};

// Appends every block of every component of a JPEG file; false when the
// file is missing or libjpeg refuses it.
inline bool readCoefficients(const std::string& path, CoefBlocks& out) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    jpeg_decompress_struct cinfo;
    vqcjphoto::JpegErrorJump err;
    cinfo.err = err.install();
    if (setjmp(err.jump)) {
        jpeg_destroy_decompress(&cinfo);
        std::fclose(f);
        return false;
    }
    jpeg_create_decompress(&cinfo);
    jpeg_stdio_src(&cinfo, f);
    jpeg_read_header(&cinfo, TRUE);
    jvirt_barray_ptr* arrays = jpeg_read_coefficients(&cinfo);
    for (int c = 0; c < cinfo.num_components; ++c) {
        const jpeg_component_info& comp = cinfo.comp_info[c];
        std::array<Vqc16u, 64> table;
        for (int i = 0; i < 64; ++i) table[i] = comp.quant_table->quantval[i];
        out.tables.push_back(table);
        for (JDIMENSION row = 0; row < comp.height_in_blocks; ++row) {
            JBLOCKARRAY line = cinfo.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&cinfo), arrays[c], row, 1, FALSE);
            for (JDIMENSION col = 0; col < comp.width_in_blocks; ++col) {
                std::array<Vqc16s, 64> b;
                std::memcpy(b.data(), line[0][col], sizeof b);
                out.blocks.push_back(b);
                out.tableOf.push_back(int(out.tables.size()) - 1);
            }
        }
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    std::fclose(f);
    return true;
}

// Calls libjpeg's reduced transforms with the least state they read: the
// sample range table (built as libjpeg builds it, with its wrap-around for
// far out-of-range values) and the component's multiplier table.
class LibjpegReducedIdct {
public:
    LibjpegReducedIdct() {
        std::memset(&cinfo_, 0, sizeof cinfo_);
        std::memset(&comp_, 0, sizeof comp_);
        JSAMPLE* t = range_ + 256;
        std::memset(range_, 0, 256);
        for (int i = 0; i < 256; ++i) t[i] = JSAMPLE(i);
        for (int i = 256; i < 640; ++i) t[i] = 255;
        std::memset(t + 640, 0, 384);
        for (int i = 0; i < 128; ++i) t[1024 + i] = JSAMPLE(i);
        cinfo_.sample_range_limit = t;
        comp_.dct_table = mult_;
    }
    void setTable(const Vqc16u* table) {
        for (int i = 0; i < 64; ++i) mult_[i] = static_cast<short>(table[i]);
    }
    // n = 4 or 2: n rows of n samples, rows step bytes apart.
    void run(int n, const Vqc16s* block, uint8_t* out, int step) {
        JSAMPROW rows[4];
        for (int r = 0; r < n; ++r) rows[r] = out + r * step;
        JCOEF coef[64];
        std::memcpy(coef, block, sizeof coef);
        (n == 4 ? jpeg_idct_4x4 : jpeg_idct_2x2)(&cinfo_, &comp_, coef, rows, 0);
    }

private:
    jpeg_decompress_struct cinfo_;
    jpeg_component_info comp_;
    JSAMPLE range_[256 + 1024 + 128];
    short mult_[64];
};

}  // namespace vqcjtest
