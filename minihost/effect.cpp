#include "minihost/effect.h"

// Windows has bindings alone and WebAssembly the page, and both have their effect in them.
#if defined(_WIN32) || defined(__EMSCRIPTEN__)
#define MINIHOST_HAS_MODULES 0
#else
#define MINIHOST_HAS_MODULES 1
#include <dlfcn.h>
#endif

#include <utility>

#include "minihost/call/command.h"

namespace minihost {
namespace {

EffectVersion VersionOf(std::uint32_t word) noexcept {
  const auto bits = [word](int low, int count) {
    return static_cast<int>((word >> low) & ((1u << count) - 1));
  };
  return {word, bits(19, 3), bits(15, 4), bits(11, 4), bits(9, 2), bits(0, 9)};
}

void RequireClean(const Ledger& ledger, const char* command) {
  std::string wrong;
  for (const std::string& line : ledger.Missing()) {
    wrong += "; kept " + line;
  }
  for (const std::string& line : ledger.Faults()) {
    wrong += "; " + line;
  }
  if (wrong.empty()) {
    return;
  }
  throw EffectError("the effect's " + std::string(command) + " broke the rules" + wrong,
                    PF_Err_BAD_CALLBACK_PARAM);
}

}  // namespace

void Effect::CloseModule::operator()(void* module) const noexcept {
#if MINIHOST_HAS_MODULES
  dlclose(module);
#else
  static_cast<void>(module);
#endif
}

std::shared_ptr<const Effect> Effect::Linked(EntryPoint entry, const Faults& faults) {
  return std::shared_ptr<const Effect>(new Effect(nullptr, entry, faults));
}

#if MINIHOST_HAS_MODULES
std::shared_ptr<const Effect> Effect::Load(const std::filesystem::path& module, const Faults& faults) {
  // A bare file name would be searched for in the system's folders.
  const std::string path = std::filesystem::absolute(module).string();
  Module loaded(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (loaded == nullptr) {
    const char* why = dlerror();
    throw std::runtime_error("cannot load the effect module " + path + ": " + (why == nullptr ? "?" : why));
  }
  const auto entry = reinterpret_cast<EntryPoint>(dlsym(loaded.get(), "MainEntry"));
  if (entry == nullptr) {
    throw std::runtime_error("the module " + path + " exports no MainEntry");
  }
  return std::shared_ptr<const Effect>(new Effect(std::move(loaded), entry, faults));
}
#else
std::shared_ptr<const Effect> Effect::Load(const std::filesystem::path& module, const Faults&) {
  throw std::runtime_error("cannot load " + module.string() + ": not on this system");
}
#endif

Effect::Effect(Module module, EntryPoint mainEntry, const Faults& faults)
    : module_(std::move(module)), entry_(mainEntry) {
  Session session(faults);
  CommandScene scene;
  {
    Command setup(session, scene);
    RequireSuccess(setup.Run(entry_, PF_Cmd_GLOBAL_SETUP, nullptr, nullptr, nullptr), "global set-up");
    RequireClean(session.ledger, "global set-up");
    version_ = VersionOf(setup.OutData().my_version);
  }
  PF_ParamDef inputLayer{};
  inputLayer.param_type = PF_Param_LAYER;
  definitions_.push_back(inputLayer);
  scene.declarations = &definitions_;
  Command setup(session, scene);
  RequireSuccess(setup.Run(entry_, PF_Cmd_PARAMS_SETUP, nullptr, nullptr, nullptr), "parameter set-up");
  RequireClean(session.ledger, "parameter set-up");
  if (setup.OutData().num_params != std::ssize(definitions_)) {
    throw EffectError("the effect counts " + std::to_string(setup.OutData().num_params) +
                          " parameters but declared " + std::to_string(definitions_.size()) +
                          ", the input layer included",
                      PF_Err_BAD_CALLBACK_PARAM);
  }
  parameters_ = std::make_shared<const ParameterList>(LearnParameters(definitions_));
}

Effect::~Effect() {
  try {
    Session session{Faults{}};
    const CommandScene scene;
    Command(session, scene).Run(entry_, PF_Cmd_GLOBAL_SETDOWN, nullptr, nullptr, nullptr);
  } catch (...) {  // out of memory for a message that nobody would read
  }
}

std::string Effect::About() const {
  Session session{Faults{}};
  const CommandScene scene;
  const CommandResult result = Command(session, scene).Run(entry_, PF_Cmd_ABOUT, nullptr, nullptr, nullptr);
  RequireSuccess(result, "about text");
  return result.message;
}

}  // namespace minihost
