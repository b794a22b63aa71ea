// How colour and alpha of a file belong together.
#pragma once

namespace cli {

/// Whether the colour of a file with alpha has been multiplied by it.
enum class AlphaForm { kStraight, kPremultiplied };

}  // namespace cli
