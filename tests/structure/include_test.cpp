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

const std::vector<std::string> kTrees = {"hostapi", "effect", "minihost", "cli"};

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
        } else if (system != nullptr && !name.starts_with("cli/")) {
          system->insert(name + ": " + match[2].str());
        }
      }
    }
  }
  return includes;
}

struct Rule {
  std::string from;                  // files whose path starts so
  std::vector<std::string> allowed;  // may include paths that start so
};

// The longest matching rule holds.
const std::vector<Rule> kRules = {
    {"hostapi/", {"hostapi/"}},
    {"effect/pixel/", {"effect/pixel/", "effect/render/scale.h", "hostapi/"}},
    {"effect/render/scale.", {"effect/render/scale.h", "hostapi/"}},
    {"effect/render/", {"effect/render/", "effect/pixel/", "effect/host/", "hostapi/"}},
    {"effect/host/", {"effect/host/", "effect/entry/parameter_table.h", "hostapi/"}},
    {"effect/host/smart_protocol.", {"effect/host/", "effect/render/render_pass.h", "hostapi/"}},
    {"effect/entry/", {"effect/entry/", "effect/host/", "effect/render/", "hostapi/"}},
    {"minihost/", {"minihost/", "hostapi/"}},
    {"cli/", {"cli/", "minihost/", "hostapi/"}},
};

const Rule* RuleFor(const std::string& file) {
  const Rule* best = nullptr;
  for (const Rule& rule : kRules) {
    if (file.starts_with(rule.from) && (best == nullptr || rule.from.size() > best->from.size())) {
      best = &rule;
    }
  }
  return best;
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
      EXPECT_TRUE(std::any_of(rule->allowed.begin(), rule->allowed.end(),
                              [&](const std::string& prefix) { return target.starts_with(prefix); }))
          << file << " may not include " << target;
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
                line == "effect/pixel/coverage_list.cpp: immintrin.h")
        << line;
  }
}

}  // namespace
