// Row addressing: a row step is a byte count whatever the element type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vqcj {

template <class T>
constexpr T* rowAt(T* base, int32_t step, int32_t row) {
    using B = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
    return reinterpret_cast<T*>(reinterpret_cast<B*>(base) + static_cast<ptrdiff_t>(step) * row);
}

}  // namespace vqcj
