// Every call of a frame in order, the motion sums that it keeps, and every way that it ends early.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>
#include <sstream>

#include "tests/support/recording_host.h"

static bool noMemory = false;

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return noMemory ? nullptr : operator new[](size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return noMemory ? nullptr : operator new(size);
}

namespace {

constexpr int kRates[] = {5, 7, 13};

std::string Reads(std::initializer_list<int> indices, int time, int step = 100) {
  std::ostringstream text;
  for (const int index : indices) {
    text << "checkout " << index << " @" << time << "/" << step << "/1000\ncheckin " << index << "\n";
  }
  return text.str();
}

TEST(Frame, CallsComeInOrder) {
  const struct {
    PF_PixelFormat format;
    std::string sampling, worldSuite, made, disposed;
  } depths[] = {
      {PF_PixelFormat_ARGB32, "8", "World Suite 1\n", "new_world 4x3 flags 0\n", "dispose_world\n"},
      {PF_PixelFormat_ARGB64, "16", "World Suite 1\n", "new_world 4x3 flags 2\n", "dispose_world\n"},
      {PF_PixelFormat_ARGB128, "Float", "World Suite 2\n", "PF_NewWorld 4x3 clear 0 format 842229089\n",
       "PF_DisposeWorld\n"},
  };
  for (const auto& depth : depths) {
    for (const bool smart : {false, true}) {
      const std::string sampling = "PF Sampling" + depth.sampling + " Suite 1\n";
      std::string calls = smart ? "checkout_layer_pixels 0\ncheckout_output\n" : "";
      calls += "acquire PF World Suite 2\nPF_GetPixelFormat output\nrelease PF World Suite 2\n";
      calls += Reads({1, 4, 2, 30, 19, 21, 22, 23, 25, 6, 8, 9, 26, 29, 31, 15, 11, 12, 3, 14, 16, 28}, 200);
      calls += Reads({11, 28}, 250) + (smart ? "acquire PF Handle Suite 1\ndispose\n" : "");
      calls += "util new_handle 28\nacquire " + sampling + "copy input[2 1 38 29] -> output[2 1 38 29]\n";
      calls += "tan 0.1309\n" + Reads({18}, 200);
      calls += Reads({5, 7, 13}, 0) + Reads({5, 7, 13}, 100) + Reads({5, 7, 13}, 200) + "abort\n";
      calls += "acquire PF " + depth.worldSuite + depth.made + "copy inputall -> worldall\n";
      calls +=
          Reads({5, 7, 13}, 250) + "sample\n" + depth.disposed + (smart ? "release PF Handle Suite 1\n" : "");
      calls += "release PF " + depth.worldSuite + "release " + sampling;
      RecordingHost host;
      host.SetImages(depth.format, 49, 39);
      host.output.extent_hint = {2, 1, 38, 29};
      EXPECT_EQ(host.Frame(smart ? PF_Cmd_SMART_RENDER : PF_Cmd_RENDER, 200), 0);
      EXPECT_EQ(host.log, calls);
      EXPECT_EQ(host.smartInput.pre_render_data, nullptr);
      EXPECT_EQ(host.Outstanding(), "");
    }
  }
}

TEST(Frame, ContinuesTheMotionSumsOrTakesThemAnew) {
  struct __attribute__((packed)) Record {
    std::int32_t time;
    double sums[3];
  };
  const struct {
    std::int32_t time, local, cached;
    std::vector<std::int32_t> samples;
    bool continues;
    double lastWeight = 1.0;
  } rows[] = {
      {0, 100, -1, {0}, false},
      {100, 100, 0, {100}, true},
      {300, 100, 100, {0, 100, 200, 300}, false},
      {300, 100, 300, {0, 100, 200, 300}, false},
      {225, 100, -1, {0, 100, 200, 400}, false, 0.25},  // the share of a frame is read two frames on
      {225, 100, 125, {225}, true},
      {99, 100, -1, {99}, true},  // follows the empty record
      {250, -100, -1, {-100}, false, 0.5},
      {250, -100, 350, {250}, true},
      {300, -100, -1, {}, false},
      {2100000000, 2000000000, -1, {0, 2000000000, 1705032704}, false, 2100000000.0 / 2000000000.0 - 1.0},
      {INT_MAX, -2, INT_MIN + 1, {INT_MAX}, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.time << " by " << row.local << " after " << row.cached);
    RecordingHost host;
    host.in.time_step = 40;
    host.in.local_time_step = row.local;
    for (const int rate : kRates) {
      host.curves[rate] = [rate](int time) { return rate + 0.1 * time; };
    }
    host.Call(PF_Cmd_SEQUENCE_SETUP);
    const Record cached{row.cached, {1e3, -2e3, 0.25}};
    std::memcpy(*host.out.sequence_data, &cached, 28);
    Record expected = row.continues ? cached : Record{};
    expected.time = row.time;
    std::string reads = "checkin 18\n";
    for (const std::int32_t& time : row.samples) {
      reads += Reads({5, 7, 13}, time, row.continues ? 40 : row.local);
      const double weight = &time == &row.samples.back() ? row.lastWeight : 1.0;
      for (int i = 0; i < 3; ++i) {
        expected.sums[i] += weight * (kRates[i] + 0.1 * time);
      }
    }
    EXPECT_EQ(host.Frame(PF_Cmd_SMART_RENDER, row.time), 0);
    EXPECT_NE(host.log.find(reads + "abort"), std::string::npos) << host.log;
    EXPECT_EQ(std::memcmp(*host.out.sequence_data, &expected, 28), 0);
  }
}

struct Ending {
  std::function<void(RecordingHost&)> spoil;
  PF_Err status;
  const char *reached, *notReached;  // calls
  int recordTime;
};
constexpr int kKept = 0x11111111, kUpdated = 200, kAbsent = -1;

void NoLayer(RecordingHost& host) {
  host.params[26].u.bd.value = 0;
}

void NoRecord(RecordingHost& host) {
  host.Call(PF_Cmd_SEQUENCE_SETDOWN);
  host.Refuse("util new_handle");
}

void NoRecordOfItsOwn(RecordingHost& host) {
  host.Call(PF_Cmd_SEQUENCE_SETDOWN);
  host.utils.host_new_handle = nullptr;
  noMemory = true;
}

const Ending kEndings[] = {
    {[](auto& host) { host.Refuse("copy input[", 31); }, 31, "copy", "tan", kKept},
    {[](auto& host) { NoLayer(host), host.Refuse("fill", 32); }, 32, "fill", "tan", kKept},
    {[](auto& host) { host.SetFloat(1, 0.999); }, 0, "copy", "tan", kKept},
    {[](auto& host) { NoLayer(host), host.SetFloat(1, -5); }, 0, "fill output clear all", "tan", kKept},
    {[](auto& host) { host.in.time_scale = 0; }, 0, "copy", "tan", kKept},
    {[](auto& host) { host.in.local_time_step = 0; }, 0, "copy", "tan", kKept},
    {[](auto& host) { host.in.current_time = -1; }, 0, "copy", "tan", kKept},
    {[](auto& host) { host.SetFloat(19, 0); }, 0, "checkin 18", "checkout 5 ", kKept},
    {[](auto& host) { host.Refuse("abort", 33); }, 33, "abort", "new_world", kKept},
    {[](auto& host) {
       host.in.local_time_step = 1;
       host.in.current_time = 1 << 16;
       host.Refuse("abort", 36);
     },
     36, "abort", "checkout 5 @65536", kKept},
    {[](auto& host) { host.SetFloat(21, 0); }, 0, "progress", "acquire PF World Suite 1", kUpdated},
    {[](auto& host) { host.Refuse("new_world", 34); }, 34, "new_world", "copy inputall", kUpdated},
    {[](auto& host) { host.Refuse("copy inputall", 35); }, 35, "copy", "checkout 5 @250", kUpdated},
    {[](auto&) { noMemory = true; }, 4, "checkout 13 @250", "progress", kUpdated},
    {[](auto& host) { host.Refuse("acquire PF Sampling"); }, 516, "acquire PF S", "copy", kKept},
    {[](auto& host) { host.Refuse("PF_GetPixelFormat"); }, 516, "PF_Get", "checkout 1 ", kKept},
    {[](auto& host) { host.format = 0x12345678; }, 516, "PF_Get", "checkout 1 ", kKept},
    {[](auto& host) { NoRecord(host); }, 517, "fill output clear all", "acquire PF S", kAbsent},
    {[](auto& host) { NoRecordOfItsOwn(host); }, 517, "fill output clear all", "acquire PF S", kAbsent},
    {[](auto& host) { NoRecord(host), host.Refuse("fill", 0x1000A); }, 0x1000A | 517, "fill", "copy",
     kAbsent},
};

TEST(Frame, EndsAsPromisedAndGivesEverythingBack) {
  for (const Ending& row : kEndings) {
    for (const PF_Cmd cmd : {PF_Cmd_RENDER, PF_Cmd_SMART_RENDER}) {
      SCOPED_TRACE(testing::Message() << &row - kEndings << " at command " << cmd);
      RecordingHost host;
      host.SetFloat(1, 300);
      host.Call(PF_Cmd_SEQUENCE_SETUP);
      std::memset(*host.out.sequence_data, 0x11, 28);
      host.in.current_time = 200;
      row.spoil(host);
      const std::vector<std::byte> before = host.Bytes(host.output);
      EXPECT_EQ(host.Frame(cmd, host.in.current_time), row.status);
      noMemory = false;
      EXPECT_TRUE(host.Called(row.reached)) << host.log;
      EXPECT_FALSE(host.Called(row.notReached)) << host.log;
      EXPECT_EQ(host.Outstanding(), "");
      EXPECT_TRUE(host.Bytes(host.output) == before || host.Called("progress"));
      ASSERT_EQ(host.out.sequence_data == nullptr, row.recordTime == kAbsent);
      EXPECT_STREQ(host.out.return_msg, row.recordTime == kAbsent ? "Out of memory.. (1:1)" : "");
      std::int32_t time = kAbsent;
      if (row.recordTime != kAbsent) {
        std::memcpy(&time, *host.out.sequence_data, sizeof time);
      }
      EXPECT_EQ(time, row.recordTime);
    }
  }
}

TEST(Frame, SmartOneNeedsWorldsAndGeometry) {
  const std::pair<std::function<void(RecordingHost&)>, PF_Err> rows[] = {
      {[](auto& host) { host.Refuse("checkout_layer_pixels", 61); }, 61},
      {[](auto& host) { host.Refuse("checkout_output", 62); }, 62},
      {[](auto& host) { host.Refuse("new_handle"); }, 4},
      {[](auto& host) { host.Refuse("lock"); }, 4},
      {[](auto& host) { host.lentInput = nullptr; }, 0},
      {[](auto& host) { host.lentOutput = nullptr; }, 0},
      {[](auto& host) { host.input.width = 0; }, 0},
      {[](auto& host) { host.input.height = 0; }, 0},
      {[](auto& host) { host.output.width = 0; }, 0},
      {[](auto& host) { host.output.height = -1; }, 0}};
  for (const auto& row : rows) {
    RecordingHost host;
    row.first(host);
    EXPECT_EQ(host.Frame(PF_Cmd_SMART_RENDER, 0), row.second) << &row - rows;
    EXPECT_FALSE(host.Called("util new_handle") || host.Called("fill") || host.Called("copy")) << host.log;
    EXPECT_EQ(host.Outstanding(), "");
  }
}

}  // namespace
