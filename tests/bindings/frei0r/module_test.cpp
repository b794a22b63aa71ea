// The built modules, by their exported functions, against the effect in a host of our own.
extern "C" {
#include <frei0r.h>
}
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#include "hostapi/commands.h"
#include "minihost/instance.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

/// A module and what it exports.
class Module {
 public:
  explicit Module(const std::string& name)
      : library_(dlopen((VINTREL_FREI0R_MODULES "/" + name).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) {
      throw std::runtime_error(dlerror());
    }
    init = Find<decltype(f0r_init)>("f0r_init");
    info = Find<decltype(f0r_get_plugin_info)>("f0r_get_plugin_info");
    paramInfo = Find<decltype(f0r_get_param_info)>("f0r_get_param_info");
    construct = Find<decltype(f0r_construct)>("f0r_construct");
    destruct = Find<decltype(f0r_destruct)>("f0r_destruct");
    set = Find<decltype(f0r_set_param_value)>("f0r_set_param_value");
    get = Find<decltype(f0r_get_param_value)>("f0r_get_param_value");
    update = Find<decltype(f0r_update)>("f0r_update");
    EXPECT_EQ(init(), 1);
    f0r_plugin_info_t all;
    info(&all);
    for (int i = 0; i < all.num_params; ++i) {
      f0r_param_info_t one;
      paramInfo(&one, i);
      index[one.name] = i;
    }
  }

  decltype(&f0r_init) init;
  decltype(&f0r_get_plugin_info) info;
  decltype(&f0r_get_param_info) paramInfo;
  decltype(&f0r_construct) construct;
  decltype(&f0r_destruct) destruct;
  decltype(&f0r_set_param_value) set;
  decltype(&f0r_get_param_value) get;
  decltype(&f0r_update) update;
  std::map<std::string, int> index;

 private:
  template <class Function>
  Function* Find(const char* name) {
    return reinterpret_cast<Function*>(dlsym(library_, name));
  }
  void* library_;  // stays loaded, as hosts have it
};

class Use {
 public:
  Use(const Module& module, unsigned width, unsigned height)
      : module_(module), size_(width * height * 4), instance_(module.construct(width, height)) {
    Set("Frame Rate", 0.25);
  }
  ~Use() { module_.destruct(instance_); }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

  void Set(const std::string& name, double value) { module_.set(instance_, &value, module_.index.at(name)); }

  Bytes Plate() const {
    Bytes plate(size_);
    for (std::size_t i = 0; i < size_; ++i) {
      plate[i] = static_cast<std::uint8_t>(i * i / 7);
    }
    return plate;
  }

  Bytes At(double time) {
    // As hosts have it: aligned for words.
    const Bytes plate = Plate();
    std::vector<std::uint32_t> in(size_ / 4), out(size_ / 4, 0xDEADBEEF);
    std::memcpy(in.data(), plate.data(), size_);
    module_.update(instance_, time, in.data(), out.data());
    Bytes bytes(size_);
    std::memcpy(bytes.data(), out.data(), size_);
    return bytes;
  }

  /// The same frame by the effect alone.
  Bytes Expected(int frame, const std::function<void(minihost::ParameterSet&)>& change, unsigned width) {
    static const auto effect = minihost::Effect::Linked(&MainEntry);
    minihost::ParameterSet parameters(effect->SharedParameters());
    change(parameters);
    minihost::Instance instance(effect, std::move(parameters));
    const int columns = static_cast<int>(width);
    const int rows = static_cast<int>(size_ / 4 / width);
    minihost::Image input(columns, rows, minihost::Depth::kBits8);
    minihost::Image output(columns, rows, minihost::Depth::kBits8);
    const Bytes plate = Plate();
    const std::uint8_t* in = plate.data();
    for (int row = 0; row < rows; ++row) {
      for (PF_Pixel& pixel : input.Row<PF_Pixel>(row)) {
        pixel = {in[3], in[0], in[1], in[2]};
        in += 4;
      }
    }
    minihost::Frame request;
    request.time = frame;
    request.timing = {25, 1, 1};
    request.input = &input;
    request.output = &output;
    EXPECT_EQ(instance.Render(request).err, PF_Err_NONE);
    Bytes bytes;
    for (int row = 0; row < rows; ++row) {
      for (const PF_Pixel& pixel : output.Row<PF_Pixel>(row)) {
        bytes.insert(bytes.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
      }
    }
    return bytes;
  }

 private:
  const Module& module_;
  std::size_t size_;
  f0r_instance_t instance_;
};

const Module& Filter() {
  static const Module module("vintrel.so");
  return module;
}

// Odd sizes, times repeated, reversed and far away, seconds and milliseconds.
TEST(FilterModule, MakesTheFrameOfItsTimeInAnyOrder) {
  for (const unsigned width : {1u, 37u, 64u}) {
    for (const double unit : {1.0, 1000.0}) {
      Use use(Filter(), width, 29);
      use.Set("Time Unit", unit == 1 ? 0.5 : 1);
      use.Set("Wind", 0.75);
      for (const int frame : {0, 1, 2, 2, 40, 3, 39, 40, 41, 0, 100'000, 7}) {
        const auto wind = [](minihost::ParameterSet& set) { set.Set("Wind", minihost::Value(25.0)); };
        EXPECT_EQ(use.At(frame * unit / 25), use.Expected(frame, wind, width))
            << width << " wide at " << frame;
      }
    }
  }
}

TEST(FilterModule, FollowsChangesAndForgetsEdits) {
  Use use(Filter(), 48, 40);
  const auto keys = [](minihost::ParameterSet& set) {
    set.Set("Speed", minihost::Track(std::vector<minihost::Key>{{0, 100.0}, {7, 800.0}}));
  };
  for (int frame = 0; frame < 8; ++frame) {
    use.Set("Speed", frame / 7.0);
    EXPECT_EQ(use.At(frame / 25.0), use.Expected(frame, keys, 48)) << frame;
  }
  use.Set("Speed", 0.5);
  use.Set("Scene Depth", 1);
  const auto edited = [](minihost::ParameterSet& set) {
    set.Set("Speed", minihost::Value(450.0));
    set.Set("Scene Depth", minihost::Value(10'000.0));
  };
  for (const int frame : {5, 6, 4}) {
    EXPECT_EQ(use.At(frame / 25.0), use.Expected(frame, edited, 48)) << frame;
  }
}

TEST(FilterModule, SurvivesAbsurdTimes) {
  Use use(Filter(), 16, 16);
  for (const double time : {1e300, -1e300, std::nan(""), -1.0, 1e14, 0.0}) {
    EXPECT_EQ(use.At(time).size(), 16u * 16 * 4);
  }
  use.Set("Time Unit", 0.5);
  EXPECT_EQ(use.At(-3), use.Plate()) << "no snow before the start";
}

TEST(FilterModule, RefusesWhatItHasNot) {
  EXPECT_EQ(Filter().construct(0, 5), nullptr);
  EXPECT_EQ(Filter().construct(40'000, 5), nullptr);
  double value = 0.7;
  Filter().set(nullptr, &value, 0);
  Filter().update(nullptr, 0, nullptr, nullptr);
  const f0r_instance_t instance = Filter().construct(8, 8);
  for (const int index : {-1, 1000}) {
    Filter().set(instance, &value, index);
    Filter().get(instance, &value, index);
    EXPECT_EQ(value, 0.7);
  }
  Filter().set(instance, &value, 1);
  double back = 0;
  Filter().get(instance, &back, 1);
  EXPECT_EQ(back, 0.7);
  Filter().destruct(instance);
}

// An instance for each thread, as some hosts have it.
TEST(FilterModule, RunsInManyThreads) {
  std::vector<Bytes> frames(8);
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      Use use(Filter(), 40, 30);
      for (int frame = t; frame < 8; frame += 4) {
        frames[static_cast<std::size_t>(frame)] = use.At(frame / 25.0);
      }
    });
  }
  threads.clear();
  Use use(Filter(), 40, 30);
  for (int frame = 0; frame < 8; ++frame) {
    EXPECT_EQ(frames[static_cast<std::size_t>(frame)], use.At(frame / 25.0)) << frame;
  }
}

TEST(SourceModule, SnowsOnNothing) {
  const Module source("vintrel_source.so");
  f0r_plugin_info_t info;
  source.info(&info);
  EXPECT_EQ(info.plugin_type, F0R_PLUGIN_TYPE_SOURCE);
  Filter().info(&info);
  EXPECT_EQ(info.plugin_type, F0R_PLUGIN_TYPE_FILTER);
  Use use(source, 64, 48);
  const Bytes frame = use.At(1);
  EXPECT_EQ(std::count(frame.begin(), frame.end(), 0) > 0, true);
  EXPECT_NE(frame, Bytes(frame.size()));
}

}  // namespace
