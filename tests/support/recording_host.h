// A host that writes down every call, answers from tables, and refuses what it is told to refuse.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "hostapi/hostapi.h"

/// One effect instance and its host, all open: a test fills the records, calls a command and reads them back.
/// Starts with the declared parameters at their defaults, 8-bit worlds of 20 x 10, 100 ticks a frame of 1000
/// a second, a shutter of half a frame, and one flake.  Handles lend blocks at odd addresses; a suite without
/// operations of ours is lent all the same.
///
/// Several callbacks come without a reference, so one host at a time is the current one: the last built.
struct RecordingHost {
  RecordingHost();
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  /// New worlds, in place of all memory lent: every byte is 0x2A in the input and 0x3C in the output.
  void SetImages(PF_PixelFormat worldFormat, std::int32_t width, std::int32_t height);
  void SetFloat(int index, double value) { params[index].u.fs_d.value = value; }

  PF_Err Call(PF_Cmd cmd);
  /// A render command; before the smart one, its first step, whose data it takes over.  The log begins anew
  /// with the render.
  PF_Err Frame(PF_Cmd cmd, std::int32_t time);

  /// Calls whose text begins with `call` do as `action` says instead: its status other than 0 is the answer
  /// (null where the call returns a pointer), and it may throw.
  void OnCall(const std::string& call, std::function<PF_Err()> action) { rules.emplace_back(call, action); }
  void Refuse(const std::string& call, PF_Err status = 71) {
    OnCall(call, [status] { return status; });
  }
  static constexpr PF_Err kNullSuite = -4242;  // an acquisition that succeeds without a suite

  bool Called(const std::string& call) const { return ('\n' + log).find('\n' + call) != std::string::npos; }
  /// What is lent, or returned once too often, and stands in no record of the host; empty when all is even.
  std::string Outstanding() const;
  const std::vector<std::byte>& Bytes(const PF_EffectWorld& world) const { return memory.at(world.data); }

  PF_InData in{};
  PF_OutData out{};
  PF_UtilCallbacks utils{};
  std::map<int, PF_ParamDef> params;                          // by id; add_param puts them here
  std::map<int, std::function<double(std::int32_t)>> curves;  // value of a float slider by time
  PF_ParamDef updated{};                                      // by PF_UpdateParamUI
  PF_PixelFormat format{};                                    // of input and output; also the host's answer
  PF_EffectWorld input{}, output{};
  PF_EffectWorld *lentInput = &input, *lentOutput = &output;
  PF_CheckoutResult layerResult{};
  PF_PreRenderInput preInput{};
  PF_PreRenderOutput preOutput{};
  PF_SmartRenderInput smartInput{};

  std::string log;  // the calls so far, one a line
  std::vector<std::pair<std::string, std::function<PF_Err()>>> rules;
  std::map<const void*, std::vector<std::byte>> memory;  // lent, by its first byte
  std::map<std::string, int> balance;                    // of what is lent without memory
};
