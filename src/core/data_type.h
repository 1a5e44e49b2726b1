// The code of an element type.
#pragma once

#include <stdint.h>

#include <type_traits>

#include "zvpcv/types.h"

namespace zvp {

template <class T>
inline constexpr DataType kDataType = std::is_same_v<T, uint8_t>    ? DataType8u
                                      : std::is_same_v<T, int8_t>   ? DataType8s
                                      : std::is_same_v<T, uint16_t> ? DataType16u
                                      : std::is_same_v<T, int16_t>  ? DataType16s
                                                                    : DataType32f;

}  // namespace zvp
