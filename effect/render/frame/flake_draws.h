// How many random numbers a flake takes from each stream, and how far its phase scatters.
#pragma once

#include <cstdint>

/// Place (2), depth, speed, slope, wind, size: of every flake, drawn or not.
inline constexpr std::uint32_t kFlakeDraws = 7;

/// Jitter of the light's place (2): of a flake below the ground, and of a drawn one where there is light.
inline constexpr std::uint32_t kIlluminationDraws = 2;

/// Phase, frequency, amount: of every flake while the wiggle is on.
inline constexpr std::uint32_t kWiggleDraws = 3;

/// Phases scatter by as much to either side: by a turn of the cosine, in radians, or so far along the noise,
/// in units of its table, that neighbours have nothing in common.
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kNoisePhaseSpan = 100.0;

/// Added to the square of a flake's travel, so that its length is above 0 for a flake at rest, which then
/// does not wiggle across.
inline constexpr double kRestTravel = 1e-5;
