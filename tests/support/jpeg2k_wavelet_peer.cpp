// The tile structures of OpenJPEG 2.5 that its DWT entry points read,
// declared as that library lays them out (they are not in its public
// header). Only the fields the DWT uses are filled in.
#include "jpeg2k_wavelet_peer.h"

#include <cstddef>
#include <cstring>

namespace {

struct OpjBand {
    int32_t x0, y0, x1, y1;
    uint32_t bandno;
    void* precincts;
    uint32_t precincts_data_size;
    int32_t numbps;
    float stepsize;
};
struct OpjResolution {
    int32_t x0, y0, x1, y1;
    uint32_t pw, ph, numbands;
    OpjBand bands[3];
    uint32_t win_x0, win_y0, win_x1, win_y1;
};
struct OpjTileComp {
    int32_t x0, y0, x1, y1;
    uint32_t compno, numresolutions, minimum_num_resolutions;
    OpjResolution* resolutions;
    uint32_t resolutions_size;
    int32_t* data;
    int32_t ownsData;
    size_t data_size_needed, data_size;
    int32_t* data_win;
    uint32_t win_x0, win_y0, win_x1, win_y1;
    int32_t numpix;
};
struct OpjTcd {
    int32_t tp_pos;
    uint32_t tp_num, cur_tp_num, cur_totnum_tp, cur_pino;
    void *tcd_image, *image, *cp, *tcp;
    uint32_t tcd_tileno;
    unsigned m_is_decoder : 1;
    void* thread_pool;
    uint32_t win_x0, win_y0, win_x1, win_y1;
    int32_t whole_tile_decoding;
};

}  // namespace

extern "C" {
int opj_dwt_encode(OpjTcd* tcd, OpjTileComp* tilec);
int opj_dwt_decode(OpjTcd* tcd, OpjTileComp* tilec, uint32_t numres);
int opj_dwt_encode_real(OpjTcd* tcd, OpjTileComp* tilec);
int opj_dwt_decode_real(OpjTcd* tcd, OpjTileComp* tilec, uint32_t numres);
void* opj_thread_pool_create(int num_threads);
}

namespace vqcjtest {
namespace {

// One level: resolution 1 is the component, resolution 0 its coordinates
// halved, rounding up.
template <class Fn>
bool run(void* data, int x0, int y0, int w, int h, Fn&& fn) {
    static void* pool = opj_thread_pool_create(0);
    auto ceilHalf = [](int v) { return v >= 0 ? (v + 1) / 2 : -((-v) / 2); };
    OpjResolution res[2] = {};
    res[1].x0 = x0, res[1].y0 = y0, res[1].x1 = x0 + w, res[1].y1 = y0 + h;
    res[0].x0 = ceilHalf(x0), res[0].y0 = ceilHalf(y0), res[0].x1 = ceilHalf(x0 + w), res[0].y1 = ceilHalf(y0 + h);
    for (auto& r : res) r.win_x1 = uint32_t(r.x1 - r.x0), r.win_y1 = uint32_t(r.y1 - r.y0);
    OpjTileComp tc = {};
    tc.x0 = x0, tc.y0 = y0, tc.x1 = x0 + w, tc.y1 = y0 + h;
    tc.numresolutions = tc.minimum_num_resolutions = 2;
    tc.resolutions = res;
    tc.data = static_cast<int32_t*>(data);
    tc.data_size = tc.data_size_needed = size_t(w) * h * 4;
    OpjTcd tcd = {};
    tcd.thread_pool = pool;
    tcd.whole_tile_decoding = 1;
    return fn(&tcd, &tc) != 0;
}

}  // namespace

bool opjDwt53Forward(int32_t* d, int x0, int y0, int w, int h) { return run(d, x0, y0, w, h, opj_dwt_encode); }
bool opjDwt53Inverse(int32_t* d, int x0, int y0, int w, int h) {
    return run(d, x0, y0, w, h, [](OpjTcd* t, OpjTileComp* c) { return opj_dwt_decode(t, c, 2); });
}
bool opjDwt97Forward(float* d, int x0, int y0, int w, int h) { return run(d, x0, y0, w, h, opj_dwt_encode_real); }
bool opjDwt97Inverse(float* d, int x0, int y0, int w, int h) {
    return run(d, x0, y0, w, h, [](OpjTcd* t, OpjTileComp* c) { return opj_dwt_decode_real(t, c, 2); });
}

}  // namespace vqcjtest
