// An effect that this host has taken in: its entry, and what it said about itself.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "hostapi/commands.h"
#include "minihost/faults.h"
#include "minihost/parameter/info.h"

namespace minihost {

/// The effect's one function, as `MainEntry` is declared.
using EntryPoint = PF_Err (*)(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                              PF_LayerDef* output, void* extra);

/// A command of the effect's life cycle failed.  Render commands report in their result instead.
class EffectError : public std::runtime_error {
 public:
  EffectError(const std::string& text, PF_Err code) : std::runtime_error(text), code_(code) {}
  PF_Err Code() const noexcept { return code_; }

 private:
  PF_Err code_;
};

/// Bits of the version word.
struct EffectVersion {
  std::uint32_t word = 0;  // as the effect gave it
  int version = 0;
  int subversion = 0;
  int fixLevel = 0;
  int stage = 0;  // 3 is release
  int build = 0;
};

/// Immutable once made, so any number of instances on any threads share one.  Making it runs the global and
/// the parameter set-up; destroying it runs the global set-down and closes the module.  An instance keeps its
/// effect alive.
class Effect {
 public:
  /// An effect linked into this program.  Throws EffectError when a set-up command fails, when the effect
  /// leaves something of the host's behind, or when its count of parameters does not match its declarations;
  /// std::invalid_argument for declarations that make no sense (LearnParameters).
  static std::shared_ptr<const Effect> Linked(EntryPoint entry, const Faults& faults = {});

  /// An effect in a loadable module, found at this path (never searched for).  Throws std::runtime_error
  /// naming the path when the module cannot be loaded or exports no `MainEntry`; else as Linked.
  static std::shared_ptr<const Effect> Load(const std::filesystem::path& module, const Faults& faults = {});

  ~Effect();
  Effect(const Effect&) = delete;
  Effect& operator=(const Effect&) = delete;

  /// Every parameter in the order of its index, the input layer first.  The shared list outlives the effect.
  const ParameterList& Parameters() const noexcept { return *parameters_; }
  SharedParameterList SharedParameters() const noexcept { return parameters_; }

  const EffectVersion& Version() const noexcept { return version_; }

  /// The effect's text about itself, its carriage returns turned into line feeds.  Throws EffectError when
  /// the effect does not give it.
  std::string About() const;

  /// For the host's own use: the declarations as the effect made them, element 0 the input layer.
  const std::vector<PF_ParamDef>& Definitions() const noexcept { return definitions_; }
  EntryPoint Entry() const noexcept { return entry_; }

 private:
  struct CloseModule {
    void operator()(void* module) const noexcept;
  };
  using Module = std::unique_ptr<void, CloseModule>;

  Effect(Module module, EntryPoint mainEntry, const Faults& faults);

  Module module_;  // first, so that it closes last
  EntryPoint entry_;
  std::vector<PF_ParamDef> definitions_;
  SharedParameterList parameters_;
  EffectVersion version_;
};

}  // namespace minihost
