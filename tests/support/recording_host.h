// A host that writes down every call, answers from tables, and refuses what it is told to refuse.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hostapi/hostapi.h"

/// One effect instance and its host.  The records are open: a test fills them, calls a command and reads them
/// back.  Starts with the declared parameters at their defaults, 8-bit worlds of 20 x 10, 100 ticks a frame
/// of 1000 a second, a shutter of half a frame, and one flake.
///
/// Several callbacks come without a reference, so one host at a time is the current one: the last built.
class RecordingHost {
 public:
  RecordingHost();
  ~RecordingHost();
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  PF_Err Call(PF_Cmd cmd);
  /// Both steps of the smart render, handing the pre-render data on; the second one's status.
  PF_Err SmartFrame(std::int32_t time);
  PF_Err PlainFrame(std::int32_t time);

  /// New worlds: a pattern in the input, 0x77 in every byte of the output.
  void SetImages(PF_PixelFormat format, std::int32_t width, std::int32_t height);
  void SetFloat(int index, double value) { params[index].u.fs_d.value = value; }

  /// The `nth` call whose text begins with `call`, and every later one, does as `action` says instead: its
  /// status other than 0 is the answer (null where the call returns a pointer), and it may throw.
  void OnCall(const std::string& call, std::function<PF_Err()> action, int nth = 1);
  void Refuse(const std::string& call, PF_Err status = 71, int nth = 1) {
    OnCall(
        call, [status] { return status; }, nth);
  }
  static constexpr PF_Err kNullSuite = -4242;  // an acquisition that succeeds without a suite

  /// The calls so far, one a line.  Cosines, square roots and samples are obeyed by OnCall but not written.
  std::string Log() const;
  /// The lines after the first that begins with `after`, up to the next that begins with `before`.
  std::string LogBetween(const std::string& after, const std::string& before) const;
  std::string LogOf(const std::string& call) const;
  bool Called(const std::string& call) const;
  void ForgetCalls() { calls_.clear(); }

  /// What is lent, or returned once too often, and stands in no record of the host; empty when all is even.
  std::string Outstanding() const;

  std::vector<std::byte> Bytes(const PF_EffectWorld& world) const;

  PF_InData in{};
  PF_OutData out{};
  PF_UtilCallbacks utils{};
  PF_ParamDef params[33] = {};
  std::vector<PF_ParamDef> declared;                          // by add_param
  std::map<int, std::function<double(std::int32_t)>> curves;  // value of a float slider or point by time
  PF_ParamDef updated{};                                      // by PF_UpdateParamUI
  PF_PixelFormat format = PF_PixelFormat_ARGB32;              // of input and output; also the host's answer
  PF_EffectWorld input{}, output{};
  PF_EffectWorld *lentInput = &input, *lentOutput = &output;
  bool oddHandles = false;  // blocks begin at odd addresses
  bool everySuite = false;  // any name and version is answered
  PF_CheckoutResult layerResult{};
  PF_PreRenderInput preInput{};
  PF_PreRenderOutput preOutput{};
  PF_SmartRenderInput smartInput{};

 private:
  struct Callbacks;
  struct Block {
    void* start;
    std::unique_ptr<std::byte[]> memory;
    std::string name;
  };
  struct Image {
    std::unique_ptr<std::byte[]> pixels;
    std::string name;
  };
  struct Rule {
    std::string call;
    std::function<PF_Err()> action;
    int remaining;
  };

  PF_Err Obey(const std::string& call);
  PF_Err Write(const std::string& call);
  Image MakeWorld(PF_EffectWorld& world, PF_PixelFormat worldFormat, std::int32_t width, std::int32_t height);
  std::string Name(const PF_EffectWorld* world) const;
  std::string Name(PF_Handle handle) const;
  PF_Handle NewBlock(std::uint64_t size);
  void DisposeBlock(PF_Handle handle);

  SPBasicSuite basic_{};
  PF_PreRenderCallbacks preCallbacks_{};
  PF_SmartRenderCallbacks smartCallbacks_{};
  std::vector<std::string> calls_;
  std::vector<Rule> rules_;
  std::map<std::string, int> balance_;  // suites and definitions
  std::map<PF_Handle, std::unique_ptr<Block>> blocks_;
  std::map<const PF_EffectWorld*, Image> worlds_;
  Image inputImage_, outputImage_;
  int blockCount_ = 0, worldCount_ = 0;
};
