// The effect under examination, behind a host that can lie.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/check/host/lying_host.h"
#include "minihost/effect.h"
#include "minihost/instance.h"

namespace cli::check {

/// The entry of a module, which stays loaded, or of the effect that is part of the tool.
struct Module {
  std::string name;  // its file, or what it is
  minihost::EntryPoint entry;
  std::shared_ptr<const minihost::Effect> keepsOpen{};
};

/// Throws ToolError(kInput) for what is no effect module.
Module OpenModule(const std::filesystem::path& file);

/// One effect, set up once.
class Subject {
 public:
  /// Throws what Effect::Linked does.
  explicit Subject(const Module& module) : host(module.entry), effect_(minihost::Effect::Linked(&host.Run)) {}

  const std::shared_ptr<const minihost::Effect>& Effect() const { return effect_; }

  /// Of the parameter with this name; 0, the input layer's, where there is none.
  std::int32_t IndexOf(std::string_view name) const;

  /// The defaults but for these, by the names that users see.
  using Numbers = std::vector<std::pair<std::string_view, double>>;
  minihost::ParameterSet Parameters(const Numbers& numbers) const;

  /// A new instance, made by an honest host.
  minihost::Instance Make(const Numbers& numbers) const {
    return minihost::Instance(effect_, Parameters(numbers));
  }

  LyingHost host;

 private:
  std::shared_ptr<const minihost::Effect> effect_;
};

/// What an instance has not given back and has done against the rules; empty when all is well.
std::string Complaints(const minihost::Instance& instance);

}  // namespace cli::check
