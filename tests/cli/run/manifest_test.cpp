// A frame counts as done only when its file is what was noted, by this scene and version.
#include "cli/run/manifest.h"

#include <gmock/gmock.h>

#include <fstream>

#include "tests/support/cli/expect_error.h"
#include "tests/support/cli/temporary_folder.h"

namespace {

using cli::Manifest;

class ManifestTest : public testing::Test {
 protected:
  void WriteFile(const std::string& name, const std::string& text,
                 std::ios::openmode mode = std::ios::trunc) {
    std::ofstream(folder_ / name, std::ios::binary | mode) << text;
  }

  Manifest Open(const std::string& scene = "scene", const std::string& version = "1.0") const {
    return Manifest(name_, scene, version);
  }

  TemporaryFolder folder_;
  std::filesystem::path name_ = cli::ManifestName(folder_ / "snow.##.png");
};

TEST_F(ManifestTest, KnowsWhatWasMadeByTheSameSceneAndVersionAndIsWhole) {
  EXPECT_EQ(name_, folder_ / ".snow.##.png.vintrel");
  WriteFile("1", "one");
  WriteFile("2", "two");
  EXPECT_FALSE(Open().IsDone(1, folder_ / "1", "in"));
  EXPECT_FALSE(std::filesystem::exists(name_)) << "reading changes nothing";
  {
    Manifest manifest = Open();
    manifest.Note(1, folder_ / "1", "in");
    EXPECT_TRUE(manifest.IsDone(1, folder_ / "1", "in"));
  }
  Open().Note(-2, folder_ / "2", "in");
  EXPECT_TRUE(Open().IsDone(1, folder_ / "1", "in"));
  EXPECT_TRUE(Open().IsDone(-2, folder_ / "2", "in"));
  EXPECT_FALSE(Open().IsDone(1, folder_ / "2", "in"));
  EXPECT_FALSE(Open().IsDone(2, folder_ / "2", "in"));
  EXPECT_FALSE(Open("other").IsDone(1, folder_ / "1", "in"));
  EXPECT_FALSE(Open("scene", "1.1").IsDone(1, folder_ / "1", "in"));
  EXPECT_FALSE(Open("0scene", "1.").IsDone(1, folder_ / "1", "in"));
  EXPECT_FALSE(Open("scenein").IsDone(1, folder_ / "1", ""));
  EXPECT_FALSE(Open().IsDone(1, folder_ / "1", "changed"));

  for (const char* damaged : {"", "on", "onE", "ones"}) {
    WriteFile("1", damaged);
    EXPECT_FALSE(Open().IsDone(1, folder_ / "1", "in")) << damaged;
  }
  std::filesystem::remove(folder_ / "1");
  EXPECT_FALSE(Open().IsDone(1, folder_ / "1", "in"));

  // The last line of a frame counts.
  Open("other").Note(-2, folder_ / "2", "in");
  EXPECT_FALSE(Open().IsDone(-2, folder_ / "2", "in"));
  EXPECT_TRUE(Open("other").IsDone(-2, folder_ / "2", "in"));
}

TEST_F(ManifestTest, SaysWhyItCannotNote) {
  Manifest manifest = Open();
  ExpectError(cli::ExitCode::kOutput, "back after it was written",
              [&] { manifest.Note(1, folder_ / "1", "in"); });
  WriteFile("1", "one");
  std::filesystem::create_directory(name_);
  ExpectError(cli::ExitCode::kOutput, name_.string() + "': Is a directory",
              [&] { manifest.Note(1, folder_ / "1", "in"); });
}

}  // namespace
