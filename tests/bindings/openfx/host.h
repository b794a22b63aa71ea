// A small host of OpenFX that loads a bundle's module by its file and does what real hosts were seen to do.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "bindings/openfx/ofx.h"

namespace ofxhost {

using PropertyValue = std::variant<int, double, std::string, void*>;
using PropertySet = std::map<std::string, std::vector<PropertyValue>>;
using Curve = std::function<double(double time)>;

struct Param {
  std::string type;
  PropertySet properties;
  std::vector<Curve> curves;  // one for each number of the value
  std::vector<double> keys;
};

/// A picture in memory, and what its clip says of it.
struct Picture {
  PropertySet properties;
  std::vector<std::byte> bytes;
};

struct Layout {
  int width = 0;
  int height = 0;
  int x1 = 0;  // of the lower left corner
  int y1 = 0;
  std::string depth = "OfxBitDepthByte";
  std::string alpha = "OfxImageAlphaUnPremultiplied";
  bool isDownwards = false;  // the first row in memory is the topmost, so that row bytes are negative
  double pixelAspectRatio = 1;
};

std::size_t BytesPerPixel(const std::string& depth);

/// Every byte, padding too, is 0xCD at first.
std::unique_ptr<Picture> MakePicture(const Layout& layout);

/// The first byte of a pixel; x and y count from the lower left corner.
std::byte* PixelAt(Picture& picture, int x, int y);

struct Clip {
  PropertySet properties;
  Picture* picture = nullptr;
};

/// A described effect or an instance of one.
struct Effect {
  PropertySet properties;
  std::map<std::string, std::unique_ptr<Param>> params;
  std::vector<std::string> order;  // of the definitions
  std::map<std::string, Clip> clips;
  std::function<int()> abort = [] { return 0; };
  std::vector<std::string> messages;
  int pictures = 0;  // on loan
  int progress = 0;  // reports
  int openProgress = 0;
  std::atomic<int> reads = 0;  // of values at a time
};

class Plugin {
 public:
  /// Throws std::runtime_error.
  explicit Plugin(const std::string& file);

  OfxStatus Act(const char* action, Effect* effect, PropertySet* in = nullptr,
                PropertySet* out = nullptr) const;

  /// Load, describe, describe in this context, and make an instance with every value at its default, and its
  /// clips without pictures.
  std::unique_ptr<Effect> Create(const std::string& context) const;
  void Destroy(Effect& effect) const { Act("OfxActionDestroyInstance", &effect); }

  OfxStatus Render(Effect& effect, double time, Picture* source, Picture& output, double scale = 1) const;

  /// Makes this the plug-in's host again.
  void Restore() const { plugin->setHost(&host_); }

  const OfxPlugin* plugin;

 private:
  mutable OfxHost host_;
};

}  // namespace ofxhost
