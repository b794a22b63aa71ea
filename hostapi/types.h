// Scalars, handles, points and rectangles that every record of the host interface is built from.
#pragma once

#include <cstdint>

/// A host status: 0 is success, anything else ends the command and travels up unchanged.
using PF_Err = std::int32_t;

inline constexpr PF_Err PF_Err_NONE = 0;
inline constexpr PF_Err PF_Err_OUT_OF_MEMORY = 4;
inline constexpr PF_Err PF_Err_BAD_CALLBACK_PARAM = 516;

using PF_Boolean = std::uint8_t;

/// Signed 16.16 fixed point: 65536 stands for 1.0.
using PF_Fixed = std::int32_t;

/// The host's name for the running effect.  Opaque to the effect, which only hands it back in callbacks.
using PF_ProgPtr = void*;

/// A relocatable block: the address of a pointer to the block's first byte.  The host may move the block
/// between commands, so the effect dereferences the handle anew in each command.
using PF_Handle = void**;

/// A ratio as the host keeps it.  `den` of 0 is legal to receive and makes the ratio infinite.
struct PF_RationalScale {
  std::int32_t num;
  std::uint32_t den;
};

/// Pixels, half open: columns left to right - 1, rows top to bottom - 1, rows counted downwards.
/// Empty when left >= right or top >= bottom.
struct PF_LRect {
  std::int32_t left;
  std::int32_t top;
  std::int32_t right;
  std::int32_t bottom;
};

using PF_Rect = PF_LRect;
