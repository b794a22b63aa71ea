// Who may include whom, read from the sources themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Includes = std::map<std::string, std::set<std::string>>;  // from a file to what it includes in quotes

const std::vector<std::string> kTrees = {"hostapi",    "effect", "minihost", "cli",  "bindings",
                                         "web/engine", "bench",  "fuzz",     "tests"};

Includes ReadIncludes(std::set<std::string>* system = nullptr) {
  const std::regex directive(R"re(^\s*#\s*include\s*(["<])([^">]+)[">])re");
  Includes includes;
  for (const std::string& tree : kTrees) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(fs::path(SOURCE_DIR) / tree)) {
      const std::string extension = entry.path().extension().string();
      if (extension != ".h" && extension != ".cpp" && extension != ".inc") {
        continue;
      }
      const std::string name = fs::relative(entry.path(), SOURCE_DIR).generic_string();
      std::set<std::string>& targets = includes[name];
      std::ifstream file(entry.path());
      for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (!std::regex_search(line, match, directive)) {
          continue;
        }
        if (match[1] == "\"") {
          targets.insert(match[2]);
        } else if (system != nullptr && (name.starts_with("hostapi/") || name.starts_with("effect/") ||
                                         name.starts_with("minihost/"))) {
          system->insert(name + ": " + match[2].str());
        }
      }
    }
  }
  return includes;
}

struct Rule {
  std::string from;                      // files whose path starts so
  std::vector<std::string> allowed;      // may include paths that start so
  std::vector<std::string> denied = {};  // of these, paths that start so are left out all the same
};

// The table of docs/architecture.md.  The longest matching rule holds; a folder may always include itself.
const std::vector<Rule> kRules = {
    {"hostapi/", {}},
    {"effect/pixel/", {"effect/render/frame/scale.h", "hostapi/"}, {"effect/pixel/fast/"}},
    {"effect/pixel/fast/", {"effect/pixel/", "effect/render/frame/scale.h", "hostapi/"}},
    {"effect/render/frame/", {"effect/pixel/", "effect/host/", "hostapi/"}, {"effect/pixel/fast/"}},
    {"effect/render/frame/scale.", {"hostapi/"}},
    {"effect/render/plain/", {"effect/render/frame/", "effect/pixel/", "hostapi/"}, {"effect/pixel/fast/"}},
    {"effect/render/fast/", {"effect/render/frame/", "effect/pixel/", "hostapi/"}},
    {"effect/render/", {"effect/pixel/", "effect/host/", "hostapi/"}},
    {"effect/host/", {"effect/entry/parameter_table.h", "hostapi/"}},
    {"effect/host/smart_protocol.", {"effect/host/", "effect/render/render_pass.h", "hostapi/"}},
    {"effect/entry/", {"effect/host/", "effect/render/", "hostapi/"}},
    {"minihost/picture/", {"hostapi/"}},
    {"minihost/parameter/", {"hostapi/"}},
    {"minihost/", {"hostapi/"}},
    {"cli/report/", {}},
    {"cli/file/", {"cli/report/"}},
    {"cli/scene/", {"cli/report/", "minihost/", "hostapi/"}, {"minihost/call/"}},
    {"cli/frames/", {"cli/scene/", "cli/file/", "cli/report/", "minihost/", "hostapi/"}, {"minihost/call/"}},
    {"cli/picture/",
     {"cli/frames/", "cli/scene/", "cli/file/", "cli/report/", "minihost/", "hostapi/"},
     {"minihost/call/"}},
    {"cli/video/",
     {"cli/frames/", "cli/scene/", "cli/file/", "cli/report/", "minihost/", "hostapi/"},
     {"minihost/call/"}},
    {"cli/run/",
     {"cli/", "minihost/", "hostapi/"},
     {"cli/command/", "cli/panel/", "cli/check/", "minihost/call/"}},
    {"cli/panel/", {"cli/", "minihost/", "hostapi/"}, {"cli/command/", "cli/check/", "minihost/call/"}},
    {"cli/check/", {"cli/report/", "minihost/", "hostapi/"}, {"minihost/call/"}},
    {"cli/", {"minihost/", "hostapi/"}, {"minihost/call/"}},
    {"bindings/", {"minihost/", "hostapi/"}, {"minihost/call/"}},
    {"bindings/frei0r/", {"bindings/rate.h", "minihost/", "hostapi/"}, {"minihost/call/"}},
    {"bindings/openfx/", {"bindings/rate.h", "minihost/", "hostapi/"}, {"minihost/call/"}},
    {"web/engine/",
     {"cli/scene/", "cli/report/", "cli/frames/sample_convert.h", "minihost/", "hostapi/"},
     {"minihost/call/"}},
    {"bench/",
     {"effect/", "minihost/", "bindings/", "tests/bindings/openfx/host.h", "hostapi/"},
     {"minihost/call/"}},
    {"bench/web/", {"cli/scene/", "minihost/", "hostapi/"}, {"minihost/call/"}},
    {"fuzz/", {"effect/pixel/", "minihost/", "cli/", "hostapi/"}, {"minihost/call/", "cli/command/"}},
    {"tests/",
     {"effect/", "minihost/", "cli/", "bindings/", "web/engine/", "bench/", "hostapi/"},
     {"minihost/call/"}},
    {"tests/minihost/call/", {"tests/", "minihost/", "hostapi/"}},
};

std::string FolderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

const Rule* RuleFor(const std::string& file) {
  const Rule* best = nullptr;
  for (const Rule& rule : kRules) {
    if (file.starts_with(rule.from) && (best == nullptr || rule.from.size() > best->from.size())) {
      best = &rule;
    }
  }
  return best;
}

bool Allows(const Rule& rule, const std::string& target) {
  const auto starts = [&](const std::string& prefix) { return target.starts_with(prefix); };
  return (target.starts_with(FolderOf(rule.from)) || std::ranges::any_of(rule.allowed, starts)) &&
         std::ranges::none_of(rule.denied, starts);
}

TEST(Includes, StayInsideTheLayers) {
  const Includes includes = ReadIncludes();
  ASSERT_GT(includes.size(), 50u);
  for (const auto& [file, targets] : includes) {
    const Rule* rule = RuleFor(file);
    ASSERT_NE(rule, nullptr) << file;
    for (const std::string& target : targets) {
      EXPECT_TRUE(includes.contains(target))
          << file << " includes " << target << ", which is not in the tree";
      EXPECT_TRUE(Allows(*rule, target)) << file << " may not include " << target;
    }
  }
}

TEST(Includes, FormNoCircle) {
  const Includes includes = ReadIncludes();
  std::set<std::string> done;
  std::vector<std::string> path;
  const std::function<void(const std::string&)> visit = [&](const std::string& file) {
    if (std::find(path.begin(), path.end(), file) != path.end()) {
      ADD_FAILURE() << file << " includes itself by way of " << path.back();
      return;
    }
    if (done.contains(file) || !includes.contains(file)) {
      return;
    }
    path.push_back(file);
    for (const std::string& target : includes.at(file)) {
      visit(target);
    }
    path.pop_back();
    done.insert(file);
  };
  for (const auto& [file, targets] : includes) {
    visit(file);
  }
}

// The effect and its host library take system headers from the C++ standard library alone, which have no
// suffix, but for the POSIX loader of modules and the compiler's names for instructions.
TEST(Includes, TakeNothingFromOutside) {
  std::set<std::string> system;
  ReadIncludes(&system);
  for (const std::string& line : system) {
    const std::string header = line.substr(line.find(": ") + 2);
    const bool standard = header.find('/') == std::string::npos && header.find(".h") == std::string::npos;
    EXPECT_TRUE(standard || line == "minihost/effect.cpp: dlfcn.h" ||
                line == "effect/pixel/fast/coverage_list.cpp: immintrin.h")
        << line;
  }
}

}  // namespace
