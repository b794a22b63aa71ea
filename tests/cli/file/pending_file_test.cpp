// Files whole or not at all, on full disks too.
#include "cli/file/pending_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using cli::ExitCode;
using testing::ElementsAre;

std::vector<std::uint8_t> Bytes(std::size_t size, std::uint8_t value) {
  return std::vector<std::uint8_t>(size, value);
}

TEST(WriteWhole, ReplacesAndLeavesNothingElse) {
  TemporaryFolder folder;
  cli::WriteWhole(folder / "a.png", Bytes(100'000, 'x'));
  EXPECT_EQ(ReadAll(folder / "a.png"), std::string(100'000, 'x'));
  ASSERT_EQ(::chmod((folder / "a.png").c_str(), 0640), 0);
  cli::WriteWhole(folder / "a.png", Bytes(3, 'y'));
  EXPECT_EQ(ReadAll(folder / "a.png"), "yyy");
  struct stat status {};
  ASSERT_EQ(::stat((folder / "a.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u) << "permissions of the file that was there";
  EXPECT_THAT(folder.Names(), ElementsAre("a.png"));

  const std::string longName = std::string(251, 'n') + ".png";
  cli::WriteWhole(folder / longName, Bytes(3, 'z'));
  EXPECT_EQ(ReadAll(folder / longName), "zzz");
}

TEST(WriteWhole, FollowsLinks) {
  TemporaryFolder folder;
  cli::WriteWhole(folder / "real.png", Bytes(1, 'a'));
  std::filesystem::create_symlink("real.png", folder / "link.png");
  cli::WriteWhole(folder / "link.png", Bytes(2, 'b'));
  EXPECT_EQ(ReadAll(folder / "real.png"), "bb");
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
}

TEST(WriteWhole, KeepsTheOldFileWhenTheDiskIsFull) {
  TemporaryFolder folder;
  cli::WriteWhole(folder / "a.png", Bytes(10, 'o'));
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit tiny{4096, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tiny), 0);
  ExpectError(ExitCode::kOutput, "a.png", [&] { cli::WriteWhole(folder / "a.png", Bytes(5000, 'n')); });
  ExpectError(ExitCode::kOutput, "b.png", [&] { cli::WriteWhole(folder / "b.png", Bytes(5000, 'n')); });
  ::setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(ReadAll(folder / "a.png"), std::string(10, 'o'));
  EXPECT_THAT(folder.Names(), ElementsAre("a.png"));
}

TEST(PendingFile, WhatAKilledProcessLeftIsRemovedAndNothingElse) {
  TemporaryFolder folder;
  std::vector<std::string> kept = {".s.2.tmp-12.tif", ".s.2.tmp-.png", ".s.2.tmp-1x.png",
                                   "s.2.tmp-1.png",   ".s.2.png",      ".s.2.tmp-99998.png"};
  for (const std::string& name : kept) {
    cli::WriteWhole(folder / name, Bytes(1, 'x'));
  }
  for (const char* name : {".s.1.tmp-1.png", ".s.2.tmp-99999.png"}) {
    cli::WriteWhole(folder / name, Bytes(1, 'x'));
  }
  const int ofTheLiving = ::open((folder / ".s.2.tmp-99998.png").c_str(), O_RDONLY);
  ASSERT_EQ(::flock(ofTheLiving, LOCK_EX | LOCK_NB), 0);
  cli::PendingFile ours(folder / "s.2.png");
  kept.push_back(ours.HiddenPath().filename());
  cli::RemoveAbandoned(folder / "",
                       [](std::string_view name) { return name == "s.1.png" || name == "s.2.png"; });
  EXPECT_THAT(folder.Names(), testing::UnorderedElementsAreArray(kept));
  ::close(ofTheLiving);
  EXPECT_NE(::flock(::open(ours.HiddenPath().c_str(), O_RDONLY), LOCK_EX | LOCK_NB), 0) << "is not locked";
  ours.Append(Bytes(3, 'l'));
  ours.Commit();
  EXPECT_EQ(ReadAll(folder / "s.2.png"), "lll");
}

TEST(CheckWritable, NamesTheFolderThatIsMissing) {
  TemporaryFolder folder;
  const auto missing = folder / "no/where/a.png";
  ExpectError(ExitCode::kOutput, "mkdir -p '" + missing.parent_path().string() + "'",
              [&] { cli::CheckWritable(missing); });
  std::filesystem::create_directory(folder / "dir.png");
  ExpectError(ExitCode::kOutput, "it is a folder", [&] { cli::WriteWhole(folder / "dir.png", Bytes(1, 1)); });
  ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
  ExpectError(ExitCode::kOutput, "not a regular file", [&] { cli::CheckWritable(folder / "pipe.png"); });
  ExpectError(ExitCode::kOutput, "not a regular file", [] { cli::CheckWritable("/dev/full"); });
  cli::CheckWritable("a.png");
  EXPECT_THAT(folder.Names(), ElementsAre("dir.png", "pipe.png"));
}

}  // namespace
