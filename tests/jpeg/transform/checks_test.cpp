// Argument-check order of the thirteen exports. For the k-th check in an
// export's order, the arguments fail checks k and all later ones while the
// earlier ones pass, so the status must be that of check k; no output byte
// may change.
#include <gtest/gtest.h>
#include <vqcj.h>

#include <cstring>
#include <functional>
#include <vector>

#include "support/testutil.h"

namespace {

struct Args {
    const void* src;
    void* dst;
    int32_t step;
    const void* table;
    int32_t quality;
};

struct Fault {
    void (*apply)(Args&);
    VqcStatus status;
};

const Fault nullSrc{[](Args& a) { a.src = nullptr; }, vqcStatusNullPtr};
const Fault nullDst{[](Args& a) { a.dst = nullptr; }, vqcStatusNullPtr};
const Fault nullTable{[](Args& a) { a.table = nullptr; }, vqcStatusNullPtr};
const Fault zeroStep{[](Args& a) { a.step = 0; }, vqcStatusBadStep};
const Fault negStep{[](Args& a) { a.step = -16; }, vqcStatusBadStep};
const Fault zeroQuality{[](Args& a) { a.quality = 0; }, vqcStatusBadArg};

struct Case {
    const char* name;
    std::function<VqcStatus(const Args&)> call;
    std::vector<Fault> order;
};

template <class T>
T* as(void* p) {
    return static_cast<T*>(p);
}
template <class T>
const T* as(const void* p) {
    return static_cast<const T*>(p);
}

const std::vector<Case>& cases() {
    static const std::vector<Case> all = {
        {"QuantFwdRawTableInit",
         [](const Args& a) { return vqciQuantFwdRawTableInit_JPEG_8u(as<Vqc8u>(a.dst), a.quality); },
         {nullDst, zeroQuality}},
        {"QuantFwdTableInit",
         [](const Args& a) { return vqciQuantFwdTableInit_JPEG_8u16u(as<Vqc8u>(a.src), as<Vqc16u>(a.dst)); },
         {nullSrc, nullDst}},
        {"QuantInvTableInit",
         [](const Args& a) { return vqciQuantInvTableInit_JPEG_8u16u(as<Vqc8u>(a.src), as<Vqc16u>(a.dst)); },
         {nullSrc, nullDst}},
        // The quantisers leave the checks to their worker: table first.
        {"QuantFwd8x8",
         [](const Args& a) { return vqciQuantFwd8x8_JPEG_16s_C1I(as<Vqc16s>(a.dst), as<Vqc16u>(a.table)); },
         {nullTable, nullDst}},
        {"QuantInv8x8",
         [](const Args& a) { return vqciQuantInv8x8_JPEG_16s_C1I(as<Vqc16s>(a.dst), as<Vqc16u>(a.table)); },
         {nullTable, nullDst}},
        {"DCTQuantFwd8x8LS 8u16s",
         [](const Args& a) {
             return vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(as<Vqc8u>(a.src), a.step, as<Vqc16s>(a.dst),
                                                        as<Vqc16u>(a.table));
         },
         {nullSrc, nullDst, zeroStep, nullTable}},
        {"DCTQuantFwd8x8LS 16u16s",
         [](const Args& a) {
             return vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(as<Vqc16u>(a.src), a.step, as<Vqc16s>(a.dst),
                                                         as<Vqc32f>(a.table));
         },
         {nullSrc, nullDst, negStep, nullTable}},
        {"DCTQuantFwd8x8 C1",
         [](const Args& a) {
             return vqciDCTQuantFwd8x8_JPEG_16s_C1(as<Vqc16s>(a.src), as<Vqc16s>(a.dst), as<Vqc16u>(a.table));
         },
         {nullSrc, nullDst, nullTable}},
        {"DCTQuantFwd8x8 C1I",
         [](const Args& a) { return vqciDCTQuantFwd8x8_JPEG_16s_C1I(as<Vqc16s>(a.dst), as<Vqc16u>(a.table)); },
         {nullDst, nullTable}},
        {"DCTQuantInv8x8LS 16s8u",
         [](const Args& a) {
             return vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(as<Vqc16s>(a.src), as<Vqc8u>(a.dst), a.step,
                                                        as<Vqc16u>(a.table));
         },
         {nullSrc, nullDst, zeroStep, nullTable}},
        {"DCTQuantInv8x8LS 16s16u",
         [](const Args& a) {
             return vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(as<Vqc16s>(a.src), as<Vqc16u>(a.dst), a.step,
                                                         as<Vqc32f>(a.table));
         },
         {nullSrc, nullDst, negStep, nullTable}},
        {"DCTQuantInv8x8 C1",
         [](const Args& a) {
             return vqciDCTQuantInv8x8_JPEG_16s_C1(as<Vqc16s>(a.src), as<Vqc16s>(a.dst), as<Vqc16u>(a.table));
         },
         {nullSrc, nullDst, nullTable}},
        {"DCTQuantInv8x8 C1I",
         [](const Args& a) { return vqciDCTQuantInv8x8_JPEG_16s_C1I(as<Vqc16s>(a.dst), as<Vqc16u>(a.table)); },
         {nullDst, nullTable}},
    };
    return all;
}

}  // namespace

TEST(TransformChecks, EveryExportInItsOrder) {
    ASSERT_EQ(cases().size(), 13u);
    const auto input = vqcjtest::randomBytes(256, 13);
    alignas(16) Vqc8u src[256], table[256];
    std::memcpy(src, input.data(), sizeof src);
    // Small positive values read as 16-bit or as float tables alike.
    for (int i = 0; i < 256; i += 4) table[i] = 1, table[i + 1] = 0, table[i + 2] = 0x80, table[i + 3] = 0x3F;
    alignas(16) Vqc8u out[256];
    for (const Case& c : cases()) {
        const Args valid{src, out, 16, table, 50};
        std::memset(out, 0x5A, sizeof out);
        EXPECT_GE(c.call(valid), 0) << c.name;
        for (size_t k = 0; k < c.order.size(); ++k) {
            Args a = valid;
            for (size_t j = k; j < c.order.size(); ++j) c.order[j].apply(a);
            std::memset(out, 0x5A, sizeof out);
            EXPECT_EQ(c.call(a), c.order[k].status) << c.name << ", check " << k;
            for (Vqc8u b : out) ASSERT_EQ(b, 0x5A) << c.name << " wrote on refusal, check " << k;
        }
    }
}
