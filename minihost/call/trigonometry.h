// Cosine and tangent for hosts on C libraries that round them differently from glibc.
//
// glibc's are the reference, so that a frame has the same bytes on every system: its results were found equal
// on processors with and without fused multiply-add, and on aarch64.
#pragma once

namespace minihost {

/// Rounds to the same single-precision number as glibc's cosine, which is all that an effect takes of it:
/// there is one number that both round to, and the last digits of double precision are not promised.  Beyond
/// 2^40 that of the C library.
double Cosine(double radians);

/// The nearest number to the tangent; for half of each angle of whole hundredths of a degree, from 0 to 90,
/// that of glibc, which for 28 of them is the second nearest.  Beyond 2^40 that of the C library.
double Tangent(double radians);

}  // namespace minihost
