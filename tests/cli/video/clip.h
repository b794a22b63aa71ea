// Clips for tests, made and looked at with the ffmpeg command line: another reader of what ours writes.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

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
