// The lifting network of the 4x4 core transform, written once over an
// arithmetic policy O (O::V the value type: a scalar, or a vector of blocks
// side by side), so that the plain routine and every SIMD target take the
// very same steps in the same order.
//
// No include guard: pct.cpp includes this inside the namespace of the plain
// routine and again inside the namespace of each SIMD target, so that every
// target compiles its own copy with its own instruction set.

template <class O, class V = typename O::V>
inline void butterfly(V& p, V& q, V& r, V& s, int R) {
    p = O::add(p, s);
    q = O::sub(q, r);
    const V t = O::mid(p, q, R);
    const V u = r;
    r = O::sub(t, s);
    s = O::sub(t, u);
    p = O::sub(p, s);
    q = O::add(q, r);
}

template <class O, class V = typename O::V>
inline void oddFwd(V& p, V& q, V& r, V& s) {
    p = O::sub(p, r);
    q = O::add(q, s);
    r = O::add(r, O::halfUp(p));
    s = O::sub(O::halfUp(q), s);
    p = O::sub(p, O::m3o4s3(q));
    q = O::add(q, O::m3o4s3(p));
    s = O::sub(s, O::m3o4s3(r));
    r = O::add(r, O::m3o4s3(s));
    s = O::add(s, O::half(p));
    r = O::sub(r, O::halfUp(q));
    p = O::sub(p, s);
    q = O::add(q, r);
}

template <class O, class V = typename O::V>
inline void oddInv(V& p, V& q, V& r, V& s) {
    q = O::sub(q, r);
    p = O::add(p, s);
    s = O::sub(s, O::half(p));
    r = O::add(r, O::halfUp(q));
    q = O::sub(q, O::m3o4s3(p));
    p = O::add(p, O::m3o4s3(q));
    r = O::sub(r, O::m3o4s3(s));
    s = O::add(s, O::m3o4s3(r));
    r = O::sub(r, O::halfUp(p));
    s = O::sub(O::halfUp(q), s);
    p = O::add(p, r);
    q = O::sub(q, s);
}

// The rounding offsets of the two rotations below differ line by line on
// purpose: they are what makes the pair exactly reversible.
// Both directions share the frame around the rotation: the halves of s and r
// are lifted out before it and put back after it.
template <class O, class Rotate, class V = typename O::V>
inline void oddOddFrame(V& p, V& q, V& r, V& s, Rotate rotate) {
    s = O::add(s, p);
    r = O::sub(r, q);
    const V t = O::half(s);
    p = O::sub(p, t);
    const V u = O::half(r);
    q = O::add(q, u);
    rotate(p, q);
    q = O::sub(q, u);
    p = O::add(p, t);
    r = O::add(r, q);
    s = O::sub(s, p);
}

template <class O, class V = typename O::V>
inline void oddOddFwd(V& p, V& q, V& r, V& s) {
    q = O::neg(q);
    r = O::neg(r);
    oddOddFrame<O>(p, q, r, s, [](V& x, V& y) {
        x = O::add(x, O::m3o4s3(y));
        y = O::sub(y, O::m3o3s2(x));
        x = O::add(x, O::m3o3s3(y));
    });
}

template <class O, class V = typename O::V>
inline void oddOddInv(V& p, V& q, V& r, V& s) {
    oddOddFrame<O>(p, q, r, s, [](V& x, V& y) {
        x = O::sub(x, O::m3o3s3(y));
        y = O::add(y, O::m3o3s2(x));
        x = O::sub(x, O::m3o4s3(y));
    });
    q = O::neg(q);
    r = O::neg(r);
}

// The whole block: rows a, b, c, d, columns 0 to 3.
template <class O, bool kFwd, class V>
inline void pctNetwork(V& a0, V& a1, V& a2, V& a3, V& b0, V& b1, V& b2, V& b3, V& c0, V& c1, V& c2,
                                     V& c3, V& d0, V& d1, V& d2, V& d3) {
    if constexpr (kFwd) {
        butterfly<O>(a0, a3, d0, d3, 0);
        butterfly<O>(a1, a2, d1, d2, 0);
        butterfly<O>(b0, b3, c0, c3, 0);
        butterfly<O>(b1, b2, c1, c2, 0);
        butterfly<O>(a0, a1, b0, b1, 1);
        oddFwd<O>(a3, a2, b2, b3);
        oddFwd<O>(d0, c0, c1, d1);
        oddOddFwd<O>(c2, c3, d2, d3);
    } else {
        oddInv<O>(a3, a2, b2, b3);
        oddInv<O>(d0, c0, c1, d1);
        oddOddInv<O>(c2, c3, d2, d3);
        butterfly<O>(a0, a1, b0, b1, 1);
        butterfly<O>(a0, a3, d0, d3, 0);
        butterfly<O>(a1, a2, d1, d2, 0);
        butterfly<O>(b0, b3, c0, c3, 0);
        butterfly<O>(b1, b2, c1, c2, 0);
    }
}
