// Keys as users write them, and the parameter courses they make.
#pragma once

#include <set>
#include <string_view>
#include <vector>

#include "minihost/parameter/set.h"

namespace cli {

/// "hold", "linear" or "smooth".  Throws ToolError(kUsage).
minihost::Ease ParseEase(std::string_view text);
std::string_view FormatEase(minihost::Ease ease);

/// Gathers the keys of one parameter, so that what is wrong is known with the key it is wrong with.
class KeyCollector {
 public:
  /// `parameter` must outlive this.  Throws ToolError(kUsage) when it cannot be animated.
  explicit KeyCollector(const minihost::ParameterInfo& parameter);

  /// In any order.  Throws ToolError(kUsage) for a frame that has a key already, or one that is beyond the
  /// frames that can be counted.
  void Add(const minihost::Key& key);

  /// One key is as good as a constant.  Throws ToolError(kUsage) without any.
  minihost::Track Finish() const;

 private:
  const minihost::ParameterInfo& parameter_;
  std::vector<minihost::Key> keys_;
  std::set<double> frames_;
};

/// Gives a parameter the keys that `text` lists: NAME@FRAME=VALUE[:EASE],FRAME=VALUE[:EASE],...
///
/// Names and values are those of an assignment; between the parts of a colour or point stands a semicolon in
/// place of the comma (`Offset@0=50;50,48=20%;80%`).  An ease leads from its key to the next, linear unless
/// said.  Throws ToolError(kUsage); then nothing changes.
void AssignKeys(minihost::ParameterSet& parameters, std::string_view text);

}  // namespace cli
