#include "cli/loaded/module.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>
#include <string>

#include "cli/report/error.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

fs::path FileOfModule(std::string_view name) {
  const std::string file = fmt::format("vintrel_{}.so", name);
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  fs::path beside = folder / file;
  if (fs::exists(beside, error)) {
    return beside;
  }
  return (folder / VINTREL_MODULES_FROM_TOOL / file).lexically_normal();
}

}  // namespace

void* FindInModule(std::string_view name, std::string_view purpose, const char* symbol) {
  const fs::path file = FileOfModule(name);
  // What is not called needs no address: the libraries behind a module are many.
  void* module = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  void* found = module != nullptr ? ::dlsym(module, symbol) : nullptr;
  if (found == nullptr) {
    const char* why = ::dlerror();
    Refuse(ExitCode::kFrameFailed, "there are no {} without the module '{}'; install the tool again ({})",
           purpose, file.string(), why != nullptr ? why : "it exports nothing");
  }
  return found;
}

}  // namespace cli
