// Options that hands know from other programs for pictures and videos.
#pragma once

#include <string>
#include <string_view>

namespace cli {

/// What to write in place of `-crf` or `--threads`, as half a sentence; empty for a word that no other
/// program is known to take.
std::string InPlaceOf(std::string_view option);

}  // namespace cli
