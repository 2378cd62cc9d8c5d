// A TIFF file in memory for libtiff, through TIFFClientOpen: used by the
// PackBits interop tests and by the benchmark, so that libtiff's codec is
// measured without a file system in the way. Reading maps the buffer, so
// libtiff decodes straight from it as it would from a mapped file.
#pragma once

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace memtiff {

struct File {
    std::vector<uint8_t> bytes;
    uint64_t pos = 0;
};

namespace detail {

inline File& file(thandle_t h) { return *static_cast<File*>(h); }

inline tmsize_t read(thandle_t h, void* buf, tmsize_t size) {
    File& f = file(h);
    const uint64_t avail = f.pos < f.bytes.size() ? f.bytes.size() - f.pos : 0;
    const auto n = static_cast<size_t>(std::min<uint64_t>(avail, static_cast<uint64_t>(size)));
    if (n) std::memcpy(buf, f.bytes.data() + f.pos, n);
    f.pos += n;
    return static_cast<tmsize_t>(n);
}

inline tmsize_t write(thandle_t h, void* buf, tmsize_t size) {
    File& f = file(h);
    const auto n = static_cast<size_t>(size);
    if (f.pos + n > f.bytes.size()) f.bytes.resize(f.pos + n);
    if (n) std::memcpy(f.bytes.data() + f.pos, buf, n);
    f.pos += n;
    return size;
}

inline toff_t seek(thandle_t h, toff_t off, int whence) {
    File& f = file(h);
    const uint64_t base = whence == SEEK_CUR ? f.pos : whence == SEEK_END ? f.bytes.size() : 0;
    f.pos = base + off;
    return f.pos;
}

inline int close(thandle_t) { return 0; }
inline toff_t size(thandle_t h) { return file(h).bytes.size(); }

inline int map(thandle_t h, void** base, toff_t* size) {
    File& f = file(h);
    *base = f.bytes.data();
    *size = f.bytes.size();
    return 1;
}

inline void unmap(thandle_t, void*, toff_t) {}

}  // namespace detail

// mode as for TIFFOpen: "w" starts an empty file, "r" reads (mapped).
inline TIFF* open(File& f, const char* mode) {
    if (mode[0] == 'w') f.bytes.clear();
    f.pos = 0;
    return TIFFClientOpen("memory", mode, &f, detail::read, detail::write, detail::seek, detail::close, detail::size,
                          detail::map, detail::unmap);
}

// The fields of a plane of `height` rows of `rowBytes` 8-bit samples, all in
// one PackBits strip. PackBits works on bytes, so interleaved rows go in as
// one wide grey row.
inline void setPlaneFields(TIFF* tif, int rowBytes, int height) {
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(rowBytes));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(height));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, static_cast<uint32_t>(height));
    TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
}

// Writes one strip: the plane encoded by libtiff, or (raw) bytes that are
// already PackBits and go into the file unchanged. False on any failure.
inline bool writePlane(File& f, int rowBytes, int height, const uint8_t* data, size_t size, bool raw) {
    TIFF* tif = open(f, "w");
    if (!tif) return false;
    setPlaneFields(tif, rowBytes, height);
    void* p = const_cast<uint8_t*>(data);
    const auto n = static_cast<tmsize_t>(size);
    const tmsize_t put = raw ? TIFFWriteRawStrip(tif, 0, p, n) : TIFFWriteEncodedStrip(tif, 0, p, n);
    TIFFClose(tif);
    return put == n;
}

// Strip 0 of the file, as stored (raw) or decoded; empty on failure.
inline std::vector<uint8_t> readPlane(File& f, bool raw) {
    std::vector<uint8_t> out;
    TIFF* tif = open(f, "r");
    if (!tif) return out;
    const tmsize_t size = raw ? static_cast<tmsize_t>(TIFFGetStrileByteCount(tif, 0)) : TIFFStripSize(tif);
    out.resize(static_cast<size_t>(size));
    const tmsize_t got = raw ? TIFFReadRawStrip(tif, 0, out.data(), size) : TIFFReadEncodedStrip(tif, 0, out.data(), size);
    TIFFClose(tif);
    if (got != size) out.clear();
    return out;
}

}  // namespace memtiff
