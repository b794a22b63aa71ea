// Every host suite that the suite cache has a slot for.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "hostapi/suites.h"

struct SuiteEntry {
  const char* name;  // matched exactly, case included
  std::int32_t version;
};

inline constexpr std::array kSuiteCatalogue = std::to_array<SuiteEntry>({
    {"AEGP Keyframe Suite", 1},
    {"AEGP Keyframe Suite", 2},
    {"AEGP Keyframe Suite", 3},
    {"AEGP Keyframe Suite", 4},
    {"AEGP Stream Suite", 4},
    {"AEGP Stream Suite", 7},
    {"AEGP Stream Suite", 8},
    {"AEGP Marker Suite", 1},
    {"AEGP Comp Suite", 4},
    {"AEGP Comp Suite", 9},
    {"AEGP Comp Suite", 11},
    {"AEGP Comp Suite", 14},
    {"AEGP Proj Suite", 2},
    {"AEGP Proj Suite", 5},
    {"AEGP Proj Suite", 7},
    {"AEGP Layer Suite", 5},
    {"AEGP Layer Suite", 8},
    {"AEGP Layer Suite", 10},
    {"AEGP Layer Suite", 11},
    {"AEGP Dynamic Stream Suite", 2},
    {"AEGP Dynamic Stream Suite", 3},
    {"AEGP Canvas Suite", 10},
    {"AEGP Canvas Suite", 11},
    {"AEGP Camera Suite", 2},
    {"AEGP Register Suite", 1},
    {"AEGP Register Suite", 2},
    {"AEGP Memory Suite", 1},
    {"AEGP Item Suite", 3},
    {"AEGP Item Suite", 7},
    {"AEGP Item Suite", 10},
    {"AEGP Item Suite", 11},
    {"AEGP Light Suite", 1},
    {"AEGP Light Suite", 2},
    {"AEGP Effect Suite", 1},
    {"AEGP Effect Suite", 2},
    {"AEGP Effect Suite", 3},
    {"AEGP Layer Mask Suite", 2},
    {"AEGP Layer Mask Suite", 5},
    {"AEGP Mask Outline Suite", 2},
    {"AEGP Mask Outline Suite", 3},
    {"AEGP Footage Suite", 7},
    {"AEGP Footage Suite", 10},
    {"AEGP Command Suite", 1},
    {"AEGP Utility Suite", 1},
    {"AEGP Utility Suite", 2},
    {"AEGP Utility Suite", 3},
    {"AEGP Utility Suite", 7},
    {"AEGP Utility Suite", 10},
    {"AEGP Utility Suite", 11},
    {"PF ANSI Suite", 1},
    {kPFHandleSuite, 1},
    {"PF Fill Matte Suite", 1},
    {"PF World Transform Suite", 1},
    {"AEGP QueryXform Suite", 4},
    {"AEGP Composite Suite", 2},
    {kPFWorldSuite, 1},
    {kPFWorldSuite, 2},
    {"AEGP PF Interface Suite", 1},
    {"PF Path Query Suite", 1},
    {"PF Path Data Suite", 1},
    {kPFParamUtilsSuite, 1},
    {"PF AE App Suite", 2},
    {"PF AE App Suite", 5},
    {"PF AE Adv App Suite", 1},
    {"PF AE Adv App Suite", 2},
    {"AEGP IO In Suite", 1},
    {"AEGP IO Out Suite", 1},
    {"AEGP IO Out Suite", 6},
    {"AEGP Persistent Data Suite", 1},
    {"AEGP Render Queue Suite", 1},
    {"AEGP Render Queue Item Suite", 3},
    {"AEGP Render Queue Item Suite", 4},
    {"AEGP Output Module Suite", 1},
    {"AEGP Output Module Suite", 2},
    {"AEGP File Import Manager Suite", 2},
    {kPFSampling8Suite, 1},
    {kPFSampling16Suite, 1},
    {"PF Iterate8 Suite", 1},
    {"PF iterate16 Suite", 1},
    {"PF iterateFloat Suite", 1},
    {"AEGP Collection Suite", 1},
    {"AEGP Collection Suite", 2},
    {"AEGP Text Document Suite", 1},
    {"AEGP Sound Data Suite", 1},
    {"AEGP Text Layer Suite", 1},
    {"AEGP Artisan Util Suite", 1},
    {"AEGP World Suite", 2},
    {"AEGP Render Options Suite", 1},
    {"AEGP Render Options Suite", 2},
    {"AEGP Tracker Suite", 1},
    {"AEGP Tracker Utility Suite", 1},
    {"AE Plugin Helper Suite2", 2},
    {"PF Color Settings Suite", 1},
    {"PF Color Settings Suite", 3},
    {"PF AE Adv Item Suite", 1},
    {"PF ColorParamSuite", 1},
    {kPFSamplingFloatSuite, 1},
    {"PF Effect UI Suite", 1},
});

/// The slot of a suite, or the catalogue's size when it has none.
constexpr std::size_t FindSuite(std::string_view name, std::int32_t version) {
  std::size_t slot = 0;
  while (slot < kSuiteCatalogue.size() &&
         !(name == kSuiteCatalogue[slot].name && version == kSuiteCatalogue[slot].version)) {
    ++slot;
  }
  return slot;
}

static_assert(kSuiteCatalogue.size() == 98);
static_assert(
    [] {
      for (std::size_t slot = 0; slot < kSuiteCatalogue.size(); ++slot) {
        if (FindSuite(kSuiteCatalogue[slot].name, kSuiteCatalogue[slot].version) != slot) {
          return false;
        }
      }
      return true;
    }(),
    "a suite has one slot");
