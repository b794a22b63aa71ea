// Clips for tests, made and looked at with the ffmpeg command line: another reader of what ours writes.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "cli/video/module/reader.h"
#include "cli/video/sink.h"
#include "tests/support/cli/temporary_folder.h"

/// What the shell command prints; fails the test when the command does.
inline std::string RunShell(const std::string& command) {
  std::string output;
  FILE* pipe = ::popen(("{ " + command + "; } </dev/null").c_str(), "r");
  std::array<char, 4096> block;
  for (std::size_t n; pipe && (n = std::fread(block.data(), 1, block.size(), pipe)) > 0;) {
    output.append(block.data(), n);
  }
  EXPECT_TRUE(pipe && ::pclose(pipe) == 0) << command;
  return output;
}

inline bool HasFfmpeg() {
  return std::system("ffmpeg -version >/dev/null 2>&1 && ffprobe -version >/dev/null 2>&1") == 0;
}

/// Runs ffmpeg with these arguments into `path`.
inline void MakeClip(const std::filesystem::path& path, const std::string& arguments) {
  RunShell("ffmpeg -v error -y " + arguments + " '" + path.string() + "' 2>&1");
}

/// The fields of the first stream of a kind ("v" or "a"), `name=value` with bars between.
inline std::string Probe(const std::filesystem::path& path, const std::string& kind,
                         const std::string& fields) {
  return RunShell("ffprobe -v error -count_packets -select_streams " + kind +
                  " -show_entries stream=" + fields + " -of compact '" + path.string() + "'");
}

/// All frames as bytes in a pixel format.
inline std::string RawFrames(const std::filesystem::path& path, const std::string& pixels) {
  return RunShell("ffmpeg -v error -i '" + path.string() + "' -f rawvideo -pix_fmt " + pixels + " -");
}

constexpr char kTenFrames[] = "-f lavfi -i testsrc2=s=64x48:r=25:d=0.4 ";

inline cli::VideoTraits TraitsFrom(const cli::VideoReader& video) {
  const cli::SourceTraits& source = video.Traits();
  return {source.width,       source.height, source.depth, source.hasAlpha,
          source.pixelAspect, *source.rate,  video.Tags(), video.Sound(0, *source.lastFrame)};
}

inline void WriteFrames(cli::VideoReader& video, cli::VideoSink& writer, std::int32_t first,
                        std::int32_t last) {
  for (std::int32_t frame = first; frame <= last; ++frame) {
    const auto picture = video.Read(frame);
    ASSERT_TRUE(picture) << frame;
    writer.Write(frame, writer.Encode(frame, picture->image, picture->traits));
  }
}

/// Reads a video and writes it with nothing drawn.
inline void CopyVideo(const std::filesystem::path& from, const std::filesystem::path& to,
                      std::optional<minihost::Depth> depth = {}) {
  cli::VideoReader video(from, {.depth = depth});
  cli::VideoSink writer(to, TraitsFrom(video));
  WriteFrames(video, writer, 0, *video.Traits().lastFrame);
  writer.Finish();
}

/// Between the colours of frame 5 of two videos, in codes of 255.
inline double MeanDifference(const std::filesystem::path& a, const std::filesystem::path& b) {
  const auto first = cli::VideoReader(a, {.depth = minihost::Depth::kBits8}).Read(5);
  const auto second = cli::VideoReader(b, {.depth = minihost::Depth::kBits8}).Read(5);
  double sum = 0;
  for (int row = 0; row < first->image.Height(); ++row) {
    const auto others = second->image.Row<PF_Pixel>(row);
    for (std::size_t x = 0; x < others.size(); ++x) {
      const PF_Pixel& is = first->image.Row<PF_Pixel>(row)[x];
      sum += std::abs(is.red - others[x].red) + std::abs(is.green - others[x].green) +
             std::abs(is.blue - others[x].blue) + std::abs(is.alpha - others[x].alpha);
    }
  }
  return sum / (3 * first->image.Width() * first->image.Height());
}

class VideoTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasFfmpeg()) {
      GTEST_SKIP() << "ffmpeg is not installed";
    }
  }
  TemporaryFolder folder_;
};
