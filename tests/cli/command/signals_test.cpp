// How the built tool ends when it is told to: by the documented code, with nothing half done.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/cli/temporary_folder.h"

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr int kInterrupted = 130;

/// Whether the process has its handlers, before which a signal would end it, or is at its end already.
bool HasStarted(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("State:\tZ")) {
      return true;
    }
    if (line.starts_with("SigCgt:")) {
      return std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1) & 1;
    }
  }
  return false;
}

class Signals : public testing::Test {
 protected:
  pid_t Start(std::vector<std::string> arguments) {
    const pid_t child = ::fork();
    if (child == 0) {
      for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ::signal(signal, SIG_DFL);  // a test in the background may have to ignore them
      }
      ::dup2(::open((streams_ / "err").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), STDERR_FILENO);
      if (::chdir((folder_ / "").c_str()) == 0) {
        std::vector<char*> words = {const_cast<char*>("vintrel"), const_cast<char*>("render")};
        for (std::string& argument : arguments) {
          words.push_back(argument.data());
        }
        words.push_back(nullptr);
        ::execv(VINTREL_TOOL, words.data());
      }
      ::_exit(99);
    }
    EXPECT_TRUE(Comes([&] { return HasStarted(child); }));
    return child;
  }

  /// The code that the process ends with, or minus the signal that ended it.
  static int End(pid_t process) {
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  /// Whether something becomes true, on a slow machine too.
  template <class Condition>
  static bool Comes(Condition&& isTrue) {
    const auto latest = std::chrono::steady_clock::now() + 60s;
    while (!isTrue()) {
      if (std::chrono::steady_clock::now() > latest) {
        return false;
      }
      std::this_thread::sleep_for(1ms);
    }
    return true;
  }

  TemporaryFolder folder_;
  TemporaryFolder streams_;
};

TEST_F(Signals, EndARunWithTheCodeAtAnyMoment) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    for (const auto wait : {0ms, 20ms, 100ms, 400ms}) {
      SCOPED_TRACE(testing::Message() << "signal " << signal << " after " << wait.count());
      const pid_t tool = Start({"--blank", "640x360", "-o", "a.mkv", "--frames", "0-99999"});
      std::this_thread::sleep_for(wait);
      ::kill(tool, signal);
      EXPECT_EQ(End(tool), kInterrupted);
      EXPECT_THAT(folder_.Names(), testing::IsEmpty()) << "a video that is not whole";
    }
  }
}

TEST_F(Signals, OfAFileTooLargeAreErrorsOfWriting) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit tiny{2000, before.rlim_max};
  for (const char* name : {"a.png", "a.mkv"}) {
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tiny), 0);
    const pid_t tool = Start({"--blank", "320x180", "-o", name, "--frames", "0"});
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(End(tool), 4) << name;
    EXPECT_THAT(ReadAll(streams_ / "err"), HasSubstr("File too large"));
    EXPECT_THAT(folder_.Names(), testing::IsEmpty());
  }
}

TEST_F(Signals, KeepThePicturesThatAreWhole) {
  const pid_t tool = Start({"--blank", "320x180", "-o", "s.####.png", "--frames", "0-99999"});
  ASSERT_TRUE(Comes([&] { return std::filesystem::exists(folder_ / "s.0003.png"); }));
  ::kill(tool, SIGTERM);
  EXPECT_EQ(End(tool), kInterrupted);
  EXPECT_THAT(ReadAll(streams_ / "err"), HasSubstr("--resume goes on from here"));
  EXPECT_THAT(folder_.Names(), testing::Each(testing::Not(HasSubstr("tmp-"))));
}

TEST_F(Signals, EndOneHugeFrameToo) {
  // Its snow takes about a second and is broken off; its encoder takes half a minute and cannot be.
  const std::vector<std::string> huge = {
      "--blank", "6000x6000", "-o",    "a.png",         "--depth",       "16",
      "--set",   "size=15",   "--set", "flakes=100000", "--compression", "zip:9"};
  for (const auto& [wait, times] : {std::pair{300ms, 1}, {1500ms, 1}, {1500ms, 2}}) {
    const pid_t tool = Start(huge);
    std::this_thread::sleep_for(wait);
    for (int i = 0; i < times; ++i) {
      ::kill(tool, SIGINT);
      std::this_thread::sleep_for(20ms);
    }
    EXPECT_EQ(End(tool), kInterrupted) << "0 when it ended by itself";
    EXPECT_THAT(folder_.Names(), testing::IsEmpty());
  }
}

}  // namespace
