// The motion sums: which samples are read, and what the instance's record holds afterwards.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>

#include "tests/support/recording_host.h"

namespace {

struct Record {
  std::int32_t time;
  double sums[3];
};

Record ReadRecord(const RecordingHost& host) {
  Record record;
  const char* bytes = static_cast<const char*>(*host.out.sequence_data);
  std::memcpy(&record.time, bytes, 4);
  std::memcpy(record.sums, bytes + 4, 24);
  return record;
}

void WriteRecord(RecordingHost& host, const Record& record) {
  host.Call(PF_Cmd_SEQUENCE_SETUP);
  char* bytes = static_cast<char*>(*host.out.sequence_data);
  std::memcpy(bytes, &record.time, 4);
  std::memcpy(bytes + 4, record.sums, 24);
}

void SetCurves(RecordingHost& host) {
  host.curves[5] = [](std::int32_t time) { return 250.3 + 0.1 * time; };
  host.curves[7] = [](std::int32_t time) { return std::sin(time * 0.01) * 40; };
  host.curves[13] = [](std::int32_t time) { return 1.0 / (3.0 + std::abs(static_cast<double>(time))); };
}
constexpr int kRates[] = {5, 7, 13};

struct Row {
  std::int32_t time, local, cached;
  std::vector<std::int32_t> samples;
  bool continues = false;
  std::vector<double> lastWeight = {};  // of the last sample, where it is not 1
};

TEST(Motion, ReadsTheHistoryOrContinues) {
  const Row rows[] = {
      {0, 100, -1, {0}},
      {100, 100, 0, {100}, true},
      {300, 100, 100, {0, 100, 200, 300}},
      {500, 100, 300, {0, 100, 200, 300, 400, 500}},
      {500, 100, 500, {0, 100, 200, 300, 400, 500}},
      {500, 100, 600, {0, 100, 200, 300, 400, 500}},
      {225, 100, -1, {0, 100, 200, 400}, false, {0.25}},
      {225, 100, 125, {225}, true},
      {98, 100, -1, {0, 200}, false, {98 / 100.0}},
      {99, 100, -1, {99}, true},  // follows the empty record
      {250, -100, -1, {-100}, false, {0.5}},
      {250, -100, 350, {250}, true},
      {300, -100, -1, {}},
      {0, -100, -1, {0}},
      {0, 1, -1, {0}, true},
      {2, 1, -1, {0, 1, 2}},
      {2100000000, 2000000000, -1, {0, 2000000000, 1705032704}, false, {2100000000.0 / 2000000000.0 - 1.0}},
      {INT_MAX, INT_MAX, -1, {0, INT_MAX}},
      {INT_MAX, INT_MIN, -1, {INT_MAX}, true},
      {INT_MAX, -2, INT_MIN + 1, {INT_MAX}, true},
      {INT_MAX, INT_MIN, 7, {INT_MIN}, false, {INT_MAX / -2147483648.0 + 1.0}},
  };
  for (const bool odd : {false, true})
    for (const Row& row : rows)
      for (const PF_PixelFormat format :
           {PF_PixelFormat_ARGB32, PF_PixelFormat_ARGB64, PF_PixelFormat_ARGB128}) {
        SCOPED_TRACE(testing::Message() << row.time << " by " << row.local << " after " << row.cached);
        RecordingHost host;
        host.oddHandles = odd;
        host.SetImages(format, 20, 10);
        SetCurves(host);
        host.in.time_step = 40;
        host.in.local_time_step = row.local;
        const Record cached{row.cached, {row.cached == -1 ? 0.0 : 1e3, row.cached == -1 ? 0.0 : -2e3, 0.0}};
        WriteRecord(host, cached);
        ASSERT_EQ(host.SmartFrame(row.time), 0);
        std::string expected;
        double sums[3] = {};
        if (row.continues) std::memcpy(sums, cached.sums, sizeof sums);
        for (std::size_t i = 0; i < row.samples.size(); ++i)
          for (int rate = 0; rate < 3; ++rate) {
            const bool isShare = !row.lastWeight.empty() && i + 1 == row.samples.size();
            const double value = host.curves[kRates[rate]](row.samples[i]);
            sums[rate] += isShare ? row.lastWeight[0] * value : value;
            const std::string index = std::to_string(kRates[rate]);
            expected += "checkout " + index + " @" + std::to_string(row.samples[i]) + "/" +
                        std::to_string(row.continues ? 40 : row.local) + "/1000\ncheckin " + index + "\n";
          }
        EXPECT_EQ(host.LogBetween("checkin 18", "abort"), expected);
        const Record record = ReadRecord(host);
        EXPECT_EQ(record.time, row.time);
        for (int rate = 0; rate < 3; ++rate) EXPECT_EQ(record.sums[rate], sums[rate]) << rate;
        EXPECT_EQ(host.Outstanding(), "");
      }
}

// A frame rendered alone is the same frame in order, bit for bit in the record and in the picture; and so is
// one that continues from a copy of the record.
TEST(Motion, AFrameAloneIsTheFrameInOrder) {
  for (const PF_PixelFormat format : {PF_PixelFormat_ARGB32, PF_PixelFormat_ARGB64, PF_PixelFormat_ARGB128}) {
    const auto prepare = [format](RecordingHost& host) {
      host.SetImages(format, 60, 40);
      host.SetFloat(1, 3000);
    };
    std::vector<std::vector<std::byte>> frames;
    std::vector<Record> records;
    {
      RecordingHost inOrder;
      prepare(inOrder);
      for (int frame = 0; frame < 4; ++frame) {
        EXPECT_EQ(inOrder.SmartFrame(frame * 100), 0);
        frames.push_back(inOrder.Bytes(inOrder.output));
        records.push_back(ReadRecord(inOrder));
      }
    }
    EXPECT_NE(frames[0], frames[1]);
    for (std::size_t frame = 0; frame < 4; ++frame) {
      RecordingHost alone;
      prepare(alone);
      if (frame == 3) WriteRecord(alone, records[2]);
      EXPECT_EQ(alone.SmartFrame(static_cast<int>(frame) * 100), 0);
      EXPECT_EQ(std::memcmp(ReadRecord(alone).sums, records[frame].sums, 24), 0) << frame;
      EXPECT_EQ(alone.Bytes(alone.output), frames[frame]) << frame;
    }
  }
}

}  // namespace
