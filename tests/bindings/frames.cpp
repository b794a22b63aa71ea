// Prints a hash of each of some frames of the built modules, driven by their files: equal lines are equal
// bytes. usage: frames VINTREL_OFX FREI0R_MODULE
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>

#include "tests/bindings/library.h"
#include "tests/bindings/openfx/host.h"

namespace {

std::uint64_t HashOf(const void* bytes, std::size_t size) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (std::size_t i = 0; i < size; ++i) {
    hash = (hash ^ static_cast<const std::uint8_t*>(bytes)[i]) * 0x100000001b3u;
  }
  return hash;
}

void PrintOpenFx(const char* file) {
  const ofxhost::Plugin plugin(file);
  for (const char* depth : {"OfxBitDepthByte", "OfxBitDepthShort", "OfxBitDepthFloat"}) {
    for (const bool isDownwards : {false, true}) {
      const ofxhost::Layout layout{157, 83, 0, 0, depth, "OfxImageAlphaPremultiplied", isDownwards};
      for (const int frame : {0, 3, 4, 50}) {
        const auto effect = plugin.Create("OfxImageEffectContextFilter");
        effect->params.at("speed")->curves[0] = [](double time) { return 100 + 3 * time; };
        effect->params.at("size")->curves[0] = [](double) { return 5; };
        const auto source = MakePicture(layout);
        std::fill(source->bytes.begin(), source->bytes.end(), std::byte{0x3C});
        const auto output = MakePicture(layout);
        const int status = plugin.Render(*effect, frame, source.get(), *output);
        std::printf("openfx %s %d %d: status %d, %016llx\n", depth, isDownwards ? 1 : 0, frame, status,
                    static_cast<unsigned long long>(HashOf(output->bytes.data(), output->bytes.size())));
      }
    }
  }
}

void PrintFrei0r(const char* file) {
  void* library = OpenLibrary(file);
  const auto init = reinterpret_cast<int (*)()>(FindSymbol(library, "f0r_init"));
  const auto construct =
      reinterpret_cast<void* (*)(unsigned, unsigned)>(FindSymbol(library, "f0r_construct"));
  const auto update = reinterpret_cast<void (*)(void*, double, const std::uint32_t*, std::uint32_t*)>(
      FindSymbol(library, "f0r_update"));
  const auto destruct = reinterpret_cast<void (*)(void*)>(FindSymbol(library, "f0r_destruct"));
  init();
  for (const unsigned width : {37u, 160u}) {
    void* instance = construct(width, 90);
    const std::vector<std::uint32_t> in(width * 90, 0x80402010);
    std::vector<std::uint32_t> out(in.size());
    for (const int frame : {0, 1, 2, 60}) {
      update(instance, frame / 25.0, in.data(), out.data());
      std::printf("frei0r %u %d: %016llx\n", width, frame,
                  static_cast<unsigned long long>(HashOf(out.data(), out.size() * 4)));
    }
    destruct(instance);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  try {
    PrintOpenFx(argv[1]);
    PrintFrei0r(argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
