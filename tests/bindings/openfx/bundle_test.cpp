// The bundle's module in a host, against the tool and against the effect in a host of our own.
#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "cli/picture/reader.h"
#include "cli/picture/writer.h"
#include "hostapi/commands.h"
#include "minihost/instance.h"
#include "tests/bindings/openfx/host.h"
#include "tests/bindings/openfx/host_pictures.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using minihost::Depth;
using minihost::Image;
using minihost::ParameterSet;
using ofxhost::DepthOf;
using ofxhost::Effect;
using ofxhost::HostPicture;
using ofxhost::kPremultiplied;
using ofxhost::Layout;
using ofxhost::PixelAt;
using ofxhost::Plate;

constexpr char kFilter[] = "OfxImageEffectContextFilter";
constexpr char kGeneral[] = "OfxImageEffectContextGeneral";
constexpr char kGenerator[] = "OfxImageEffectContextGenerator";

const ofxhost::Plugin& Plugin() {
  static const ofxhost::Plugin plugin(VINTREL_OPENFX_MODULE);
  return plugin;
}

const std::shared_ptr<const minihost::Effect>& TheEffect() {
  static const auto effect = minihost::Effect::Linked(&MainEntry);
  return effect;
}

struct Scene {
  Layout layout{};
  int frame = 0;
  std::function<void(ParameterSet&)> change = [](ParameterSet&) {};
  int proxy = 1;
  bool hasSource = true;
  minihost::FrameTiming timing{25, 1, 1};
  PF_RationalScale aspect{1, 1};
};

/// The frame by the effect alone, as a host's picture.
std::unique_ptr<ofxhost::Picture> Expected(const Scene& scene, ofxhost::Picture* source) {
  ParameterSet parameters(TheEffect()->SharedParameters());
  scene.change(parameters);
  minihost::Instance instance(TheEffect(), std::move(parameters));
  Image output(scene.layout.width, scene.layout.height, DepthOf(scene.layout));
  Image input(scene.layout.width, scene.layout.height, DepthOf(scene.layout));
  minihost::Frame frame;
  if (source != nullptr) {
    input = ofxhost::Seen(*source, scene.layout);
  }
  frame.input = &input;
  frame.time = scene.frame;
  frame.timing = scene.timing;
  frame.downsampleX = frame.downsampleY = {1, static_cast<std::uint32_t>(scene.proxy)};
  frame.pixelAspectRatio = scene.aspect;
  frame.output = &output;
  EXPECT_EQ(instance.Render(frame).err, PF_Err_NONE);
  return HostPicture(output, scene.layout);
}

void SetCurve(Effect& effect, const std::string& name, ofxhost::Curve curve, std::vector<double> keys = {}) {
  effect.params.at(name)->curves[0] = std::move(curve);
  effect.params.at(name)->keys = std::move(keys);
}

/// The curve at each of the frames, which is all that the effect reads.
minihost::Track TrackOf(const ofxhost::Curve& curve, int last) {
  std::vector<minihost::Key> keys;
  for (int frame = 0; frame <= last; ++frame) {
    keys.push_back({static_cast<double>(frame), curve(frame)});
  }
  return minihost::Track(std::move(keys));
}

void ExpectFrame(Effect& effect, const Scene& scene, double time) {
  Image plate = Plate(scene.layout);
  const auto source = scene.hasSource ? HostPicture(plate, scene.layout) : nullptr;
  auto output = ofxhost::MakePicture(scene.layout);
  ASSERT_EQ(Plugin().Render(effect, time, source.get(), *output, 1.0 / scene.proxy), 0);
  EXPECT_EQ(effect.pictures, 0) << "all handed back";
  const auto expected = Expected(scene, source.get());
  EXPECT_TRUE(output->bytes == expected->bytes)
      << "at " << time << ", " << scene.layout.depth << ", " << scene.layout.alpha << ", down "
      << scene.layout.isDownwards << ", 1/" << scene.proxy;
}

TEST(Bundle, DeclaresTheEffectsParameters) {
  for (const char* context : {kFilter, kGeneral, kGenerator}) {
    const auto effect = Plugin().Create(context);
    EXPECT_EQ(effect->clips.contains("Source"), context != kGenerator);
    std::size_t values = 0;
    for (const minihost::ParameterInfo& info : TheEffect()->Parameters()) {
      values += info.HasValue() ? 1u : 0u;
    }
    EXPECT_EQ(effect->order.size(), values + 1 + 3 + 1) << "the second side of the point, groups, page";
  }
  const auto effect = Plugin().Create(kFilter);
  auto& size = effect->params.at("size")->properties;
  EXPECT_EQ(std::get<double>(size["OfxParamPropMax"][0]), 15);
  EXPECT_EQ(std::get<double>(size["OfxParamPropDisplayMin"][0]), 0.5);
  EXPECT_EQ(std::get<int>(size["OfxParamPropDigits"][0]), 2);
  EXPECT_EQ(std::get<int>(effect->params.at("frequency")->properties["OfxParamPropAnimates"][0]), 0);
  auto& embed = effect->params.at("embedDepth")->properties;
  EXPECT_EQ(std::get<std::string>(embed["OfxParamPropParent"][0]), "extrasGroup");
  EXPECT_EQ(effect->params.at("transferMode")->properties["OfxParamPropChoiceOption"].size(), 2u);
  EXPECT_EQ(std::get<int>(effect->params.at("transferMode")->properties["OfxParamPropDefault"][0]), 1);

  ofxhost::PropertySet preferences;
  EXPECT_EQ(Plugin().Act("OfxImageEffectActionGetClipPreferences", effect.get(), nullptr, &preferences), 0);
  EXPECT_EQ(std::get<int>(preferences["OfxImageEffectFrameVarying"][0]), 1);
}

TEST(Bundle, GreysOutWhatHasNoMeaning) {
  const auto effect = Plugin().Create(kFilter);
  auto& embed = effect->params.at("embedDepth")->properties;
  for (const int composite : {0, 1, 0}) {
    SetCurve(*effect, "compositeWithOriginal", [=](double) { return composite; });
    ofxhost::PropertySet in = {{"OfxPropChangeReason", {std::string("OfxChangeUserEdited")}}};
    EXPECT_EQ(Plugin().Act("OfxActionInstanceChanged", effect.get(), &in), 0);
    EXPECT_EQ(embed.contains("OfxParamPropEnabled") ? std::get<int>(embed["OfxParamPropEnabled"][0]) : 1,
              composite);
  }
}

// Hosts that keep an instance, and hosts that load, describe and make one for each frame.
TEST(Bundle, MakesTheEffectsFrames) {
  const auto kept = Plugin().Create(kGeneral);
  for (const char* depth : {"OfxBitDepthByte", "OfxBitDepthShort", "OfxBitDepthFloat"}) {
    for (const char* alpha : {"OfxImageAlphaUnPremultiplied", kPremultiplied}) {
      for (const bool isDownwards : {false, true}) {
        for (const int proxy : {1, 2}) {
          Scene scene{{61, 37, -5, 3, depth, alpha, isDownwards}, 0, {}, proxy};
          scene.change = [](ParameterSet& set) { set.Set("Transfer Mode", minihost::Value(1.0)); };
          for (const int frame : {7, 8, 2}) {
            scene.frame = frame;
            const auto fresh = Plugin().Create(kFilter);
            for (Effect* effect : {kept.get(), fresh.get()}) {
              SetCurve(*effect, "transferMode", [](double) { return 0; });
              ExpectFrame(*effect, scene, frame);
            }
            Plugin().Destroy(*fresh);
          }
        }
      }
    }
  }
  Scene blank{{40, 30}};
  blank.hasSource = false;
  blank.frame = 12;
  ExpectFrame(*Plugin().Create(kGenerator), blank, 12);
  SetCurve(*kept, "transferMode", [](double) { return 1; });
  ExpectFrame(*kept, blank, 12);
}

// The tool's own files, in every depth they have.
TEST(Bundle, MakesTheToolsFrames) {
  TemporaryFolder folder;
  for (const char* depth : {"OfxBitDepthByte", "OfxBitDepthShort", "OfxBitDepthFloat"}) {
    const Layout layout{64, 40, 0, 0, depth};
    const Image plate = Plate(layout);
    cli::PictureTraits traits;
    traits.hasAlpha = true;
    const auto bytes = cli::EncodePicture(plate, traits, cli::FileFormat::kTiff);
    std::ofstream(folder / "in.tif", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    const std::string command = "cd '" + (folder / "").string() +
                                "' && '" VINTREL_TOOL
                                "' render in.tif -o out.tif --frames 9 --fps 23.976 -q --set Size=4.2 "
                                "--set Color=#336699 --set Offset=30%,60% --key Speed@0=100,10=300";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const Image tool = cli::ReadPicture(folder / "out.tif", DepthOf(layout)).image;

    const auto effect = Plugin().Create(kFilter);
    for (auto& [name, clip] : effect->clips) {
      clip.properties["OfxImageEffectPropFrameRate"] = {24000.0 / 1001};
    }
    SetCurve(*effect, "size", [](double) { return 4.2; });
    SetCurve(*effect, "speed", [](double t) { return t < 10 ? 100 + 20 * t : 300; }, {0, 10});
    SetCurve(*effect, "offsetX", [](double) { return 30; });
    SetCurve(*effect, "offsetY", [](double) { return 60; });
    const double rgb[] = {0.2, 0.4, 0.6};
    for (std::size_t i = 0; i < 3; ++i) {
      effect->params.at("color")->curves[i] = [=](double) { return rgb[i]; };
    }
    const auto source = HostPicture(plate, layout);
    auto output = ofxhost::MakePicture(layout);
    ASSERT_EQ(Plugin().Render(*effect, 9, source.get(), *output), 0);
    EXPECT_TRUE(output->bytes == HostPicture(tool, layout)->bytes) << depth;
  }
}

TEST(Bundle, FollowsCurvesAndTheirEdits) {
  const auto effect = Plugin().Create(kFilter);
  Scene scene{{48, 30}};
  for (const double pace : {1.0, 2.5, 1.0, 7.0}) {
    const ofxhost::Curve speed = [=](double t) { return 100 + pace * t * (60 - t) / 10; };
    const ofxhost::Curve wind = [=](double t) { return std::sin(t / 9) * pace; };
    SetCurve(*effect, "speed", speed, {0, 60});
    SetCurve(*effect, "wind", wind);
    scene.change = [&](ParameterSet& set) {
      set.Set("Speed", TrackOf(speed, 60));
      set.Set("Wind", TrackOf(wind, 60));
    };
    // Nobody tells of the edit.
    for (const int frame : {5, 6, 3, 40, 41, 42, 41, 0, 1, 2}) {
      scene.frame = frame;
      ExpectFrame(*effect, scene, frame);
      ExpectFrame(*Plugin().Create(kFilter), Scene{{48, 30}, frame}, frame);
    }
  }
  // What cannot be animated counts for the sums too.
  scene.change = [](ParameterSet& set) { set.Set("Frequency", minihost::Value(3.0)); };
  const auto other = Plugin().Create(kFilter);
  for (const double frequency : {2.0, 3.0}) {
    SetCurve(*other, "frequency", [=](double) { return frequency; });
    for (const int frame : {4, 5, 6}) {
      auto output = ofxhost::MakePicture(scene.layout);
      Plugin().Render(*other, frame + (frequency == 3 ? 1 : 0), nullptr, *output);
    }
  }
  scene.frame = 8;
  ExpectFrame(*other, scene, 8);
}

TEST(Bundle, StaysFastInALongShot) {
  constexpr int kLast = 10'001;
  const auto effect = Plugin().Create(kFilter);
  double bump = 0;
  const ofxhost::Curve speed = [&](double t) { return 200 + t / 100 + (t == 4321 ? bump : 0); };
  SetCurve(*effect, "speed", speed, {0, 20'000});
  Scene scene{{16, 16}};
  scene.change = [&](ParameterSet& set) { set.Set("Speed", TrackOf(speed, kLast)); };
  const auto render = [&](int frame) {
    effect->reads = 0;
    scene.frame = frame;
    ExpectFrame(*effect, scene, frame);
    return effect->reads.load();
  };
  EXPECT_GT(render(10'000), 20'000);
  EXPECT_LT(render(9'999), 5'000);
  EXPECT_LT(render(10'001), 5'000);
  EXPECT_LT(render(123), 1'000);
  // A change of one frame only: no few values tell, but the host does.
  bump = 90;
  ofxhost::PropertySet in = {{"OfxPropChangeReason", {std::string("OfxChangeUserEdited")}}};
  EXPECT_EQ(Plugin().Act("OfxActionInstanceChanged", effect.get(), &in), 0);
  render(9'998);
  EXPECT_LT(render(9'999), 5'000);
  bump = 0;
  EXPECT_EQ(Plugin().Act("OfxActionInstanceChanged", effect.get(), &in), 0);
  render(10'000);
}

TEST(Bundle, RendersInManyThreadsWithOneInstance) {
  std::vector<std::jthread> threads;
  std::atomic<int> wrong = 0;
  const Layout layout{40, 30};
  const Image plate = Plate(layout);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int frame = 1 + t; frame < 40; frame += 1 + t % 2) {
        const auto effect = Plugin().Create(kFilter);
        const double pace = 1 + t / 2;
        SetCurve(*effect, "speed", [=](double time) { return 100 + pace * time; });
        Scene scene{layout, frame};
        scene.change = [&](ParameterSet& set) {
          set.Set("Speed", TrackOf([=](double time) { return 100 + pace * time; }, 40));
        };
        const auto source = HostPicture(plate, layout);
        auto output = ofxhost::MakePicture(layout);
        Plugin().Render(*effect, frame, source.get(), *output);
        wrong += output->bytes != Expected(scene, source.get())->bytes;
      }
    });
  }
  threads.clear();
  EXPECT_EQ(wrong, 0);
}

// Fields and slowed clips; times before the start and beyond all counting.
TEST(Bundle, TakesAnyTimeAndAspect) {
  const auto effect = Plugin().Create(kFilter);
  Scene scene{{48, 30}};
  scene.timing = {25'000, 1000, 1000};
  scene.frame = 5500;
  ExpectFrame(*effect, scene, 5.5);
  Scene wide{{48, 30, 0, 0, "OfxBitDepthByte", kPremultiplied, false, 1.0666667}, 5};
  wide.aspect = {16, 15};
  ExpectFrame(*effect, wide, 5);
  ExpectFrame(*effect, Scene{{48, 30}, -3}, -3);
  for (const double time : {std::nan(""), 1e300, -1e300}) {
    auto output = ofxhost::MakePicture(scene.layout);
    EXPECT_EQ(Plugin().Render(*effect, time, nullptr, *output), 0);
  }
}

TEST(Bundle, StopsAndReportsAsTheHostWishes) {
  const auto effect = Plugin().Create(kFilter);
  auto output = ofxhost::MakePicture({64, 48});
  int asked = 0;
  effect->abort = [&] {
    if (++asked == 1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(600));
    }
    return 0;
  };
  EXPECT_EQ(Plugin().Render(*effect, 3, nullptr, *output), 0);
  EXPECT_GT(effect->progress, 3);
  EXPECT_EQ(effect->openProgress, 0);
  const int all = asked;
  asked = 0;
  effect->abort = [&] { return ++asked == 3; };
  EXPECT_EQ(Plugin().Render(*effect, 3, nullptr, *output), 0);
  EXPECT_LT(asked, all / 2);
}

TEST(Bundle, SaysWhatItCannotDo) {
  const auto effect = Plugin().Create(kFilter);
  auto output = ofxhost::MakePicture({8, 8});
  output->properties["OfxImageEffectPropComponents"] = {std::string("OfxImageComponentAlpha")};
  EXPECT_EQ(Plugin().Render(*effect, 3, nullptr, *output), 1000);
  EXPECT_THAT(effect->messages, testing::ElementsAre(testing::HasSubstr("OfxImageComponentAlpha")));
  EXPECT_EQ(effect->pictures, 0);

  output = ofxhost::MakePicture({8, 8});
  output->properties["OfxImagePropBounds"] = {0, 0, 40'000, 1};
  output->properties["OfxImagePropRegionOfDefinition"] = {0, 0, 40'000, 1};
  EXPECT_EQ(Plugin().Render(*effect, 3, nullptr, *output), 1);
  EXPECT_EQ(effect->messages.size(), 2u);

  EXPECT_EQ(Plugin().Act("OfxActionOfTomorrow", effect.get()), 14);
  OfxHost bare{nullptr, [](OfxPropertySetHandle, const char*, int) -> const void* { return nullptr; }};
  Plugin().plugin->setHost(&bare);
  EXPECT_EQ(Plugin().Act("OfxActionLoad", nullptr), 4);
  Plugin().plugin->setHost(nullptr);
  EXPECT_EQ(Plugin().Act("OfxActionLoad", nullptr), 4);
  Plugin().Restore();
}

}  // namespace
