// Every way that a frame ends early: its status, its output, the instance's record, and what is given back.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/support/recording_host.h"

namespace {
std::size_t refusedBytes = 0;  // an allocation of this size fails; 0: none
void* Allocate(std::size_t size) noexcept {
  return size != 0 && size == refusedBytes ? nullptr : std::malloc(size != 0 ? size : 1);
}
}  // namespace

void* operator new(std::size_t size) {
  if (void* block = Allocate(size)) return block;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

namespace {

enum class Output { untouched, black, layer };
enum class State { absent, kept, updated };

struct Ending {
  const char* name;
  std::function<void(RecordingHost&)> spoil;
  PF_Err status;
  Output output;
  State state;
  const char* notReached;  // a call that must not come any more
};

void Composite(RecordingHost& host, int on) {
  host.params[26].u.bd.value = on;
}

const Ending kEndings[] = {
    {"copy of the background", [](auto& host) { host.Refuse("copy input[", 31); }, 31, Output::untouched,
     State::kept, "checkout 18"},
    {"clearing of the background", [](auto& host) { Composite(host, 0), host.Refuse("fill", 32); }, 32,
     Output::untouched, State::kept, "tan"},
    {"no flakes", [](auto& host) { host.SetFloat(1, 0.999); }, 0, Output::layer, State::kept, "checkout 18"},
    {"less than no flakes", [](auto& host) { host.SetFloat(1, -5); }, 0, Output::layer, State::kept, "tan"},
    {"no flakes, no layer", [](auto& host) { Composite(host, 0), host.SetFloat(1, 0); }, 0, Output::black,
     State::kept, "tan"},
    {"no ticks", [](auto& host) { host.in.time_scale = 0; }, 0, Output::layer, State::kept, "tan"},
    {"no layer frames", [](auto& host) { host.in.local_time_step = 0; }, 0, Output::layer, State::kept,
     "tan"},
    {"before time 0", [](auto& host) { host.in.current_time = -1; }, 0, Output::layer, State::kept, "tan"},
    {"opacity 0", [](auto& host) { host.SetFloat(19, 0); }, 0, Output::layer, State::kept, "checkout 5 "},
    {"opacity below 0", [](auto& host) { host.SetFloat(19, -1); }, 0, Output::layer, State::kept,
     "checkout 5 "},
    {"cancelled", [](auto& host) { host.Refuse("abort", 33); }, 33, Output::layer, State::kept, "new_world"},
    {"no reduced world", [](auto& host) { host.Refuse("new_world", 34), host.Refuse("PF_NewWorld", 34); }, 34,
     Output::layer, State::updated, "copy inputall"},
    {"no reduced copy", [](auto& host) { host.Refuse("copy inputall", 35); }, 35, Output::layer,
     State::updated, "checkout 5 @250"},
    {"no noise table", [](auto&) { refusedBytes = 4096; }, 4, Output::layer, State::updated, "progress"},
    {"missing sampling suite", [](auto& host) { host.Refuse("acquire PF Sampling"); }, 516, Output::untouched,
     State::kept, "copy"},
    {"record without memory",
     [](auto& host) { host.Call(PF_Cmd_SEQUENCE_SETDOWN), host.Refuse("util new_handle"); }, 517,
     Output::black, State::absent, "acquire PF Sampling"},
    {"record and clearing refused",
     [](auto& host) {
       host.Call(PF_Cmd_SEQUENCE_SETDOWN), host.Refuse("util new_handle"), host.Refuse("fill", 0x1000A);
     },
     0x1000A | 517, Output::untouched, State::absent, "copy"},
};

TEST(FrameFailure, EndsAsPromisedAndGivesEverythingBack) {
  for (const PF_PixelFormat format : {PF_PixelFormat_ARGB32, PF_PixelFormat_ARGB64, PF_PixelFormat_ARGB128})
    for (const Ending& row : kEndings)
      for (const bool smart : {true, false}) {
        SCOPED_TRACE(testing::Message() << row.name << (smart ? " smart " : " plain ") << format);
        RecordingHost host;
        host.SetImages(format, 20, 10);
        host.SetFloat(1, 300);
        host.Call(PF_Cmd_SEQUENCE_SETUP);
        std::memset(*host.out.sequence_data, 0x11, 28);
        const auto before = host.Bytes(host.output), layer = host.Bytes(host.input);
        host.in.current_time = 200;
        row.spoil(host);
        host.ForgetCalls();
        const PF_Err status =
            smart ? host.SmartFrame(host.in.current_time) : host.PlainFrame(host.in.current_time);
        refusedBytes = 0;
        EXPECT_EQ(status, row.status);
        EXPECT_FALSE(host.Called(row.notReached)) << host.Log();
        EXPECT_EQ(host.smartInput.pre_render_data, nullptr);
        EXPECT_EQ(host.Called("dispose h"), smart) << host.Log();
        EXPECT_EQ(host.Outstanding(), "");
        const auto after = host.Bytes(host.output);
        std::vector<std::byte> expected = before;
        if (row.output == Output::black) expected.assign(before.size(), std::byte{});
        for (std::size_t i = 0, bytes = static_cast<std::size_t>(host.output.rowbytes); i < before.size();
             ++i) {
          if (row.output == Output::layer && i % bytes < bytes - 16) expected[i] = layer[i];
        }
        EXPECT_EQ(after, expected);
        ASSERT_EQ(host.out.sequence_data == nullptr, row.state == State::absent);
        EXPECT_STREQ(host.out.return_msg, row.state == State::absent ? "Out of memory.. (1:1)" : "");
        if (row.state != State::absent) {
          std::int32_t time;
          std::memcpy(&time, *host.out.sequence_data, 4);
          EXPECT_EQ(time, row.state == State::updated ? 200 : 0x11111111);
        }
      }
}

TEST(FrameFailure, SmartFrameNeedsItsGeometry) {
  RecordingHost host;
  const auto before = host.Bytes(host.output);
  host.in.current_time = 100;
  EXPECT_EQ(host.Call(PF_Cmd_SMART_RENDER), 4);
  EXPECT_EQ(host.Bytes(host.output), before);
  EXPECT_EQ(host.out.sequence_data, nullptr);
  EXPECT_STREQ(host.out.return_msg, "");
  EXPECT_FALSE(host.Called("acquire PF Handle Suite"));
  EXPECT_FALSE(host.Called("util new_handle"));
  EXPECT_EQ(host.Outstanding(), "");
  // A host without the handle suite: the data stays the host's to free.
  host.Call(PF_Cmd_SMART_PRE_RENDER);
  host.smartInput.pre_render_data = std::exchange(host.preOutput.pre_render_data, nullptr);
  host.Refuse("acquire PF Handle Suite");
  EXPECT_EQ(host.Call(PF_Cmd_SMART_RENDER), 516);
  EXPECT_EQ(host.Bytes(host.output), before);
  EXPECT_EQ(host.Outstanding(), "");
}

// Whole steps of alpha decide in the integer depths, any opacity above 0 in float.
TEST(FrameFailure, FaintFlakesAreDrawnWhereAlphaHoldsThem) {
  struct Row {
    PF_PixelFormat format;
    double opacity;
    bool drawn;
  };
  for (const Row& row : {Row{PF_PixelFormat_ARGB32, 0.1, false}, Row{PF_PixelFormat_ARGB32, 0.39, false},
                         Row{PF_PixelFormat_ARGB32, 0.4, true}, Row{PF_PixelFormat_ARGB64, 0.003, false},
                         Row{PF_PixelFormat_ARGB64, 0.0031, true}, Row{PF_PixelFormat_ARGB128, 0.1, true},
                         Row{PF_PixelFormat_ARGB128, 1e-30, true}}) {
    RecordingHost host;
    host.SetImages(row.format, 20, 10);
    host.SetFloat(19, row.opacity);
    EXPECT_EQ(host.SmartFrame(0), 0);
    EXPECT_EQ(host.Called("abort"), row.drawn) << row.opacity;
    EXPECT_TRUE(host.Called("checkin 18")) << row.opacity;
  }
}

}  // namespace
