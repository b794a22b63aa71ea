// What users call parameters: display names and slugs, qualified by the group where needed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "minihost/parameter/info.h"

namespace cli {

/// Lower case, with one dash for every run of other characters than letters and digits, none at the ends:
/// "Variation % (Size)" becomes variation-size.
std::string Slug(std::string_view name);

/// The names of all parameters that have a value.  The list must outlive this.
class ParameterNames {
 public:
  explicit ParameterNames(const minihost::ParameterList& list);

  /// The parameter that `text` names: a display name or slug, letters of either case, alone or after its
  /// group's and a slash ("Wiggle/Amount", wiggle/amount; a slash in front means outside of any group).
  ///
  /// Throws ToolError(kUsage): for an unknown name with the nearest known one, for a name that several
  /// parameters share with the full names to choose from.
  const minihost::ParameterInfo& Find(std::string_view text) const;

  /// The shortest slug that Find takes for this parameter.
  const std::string& SlugOf(const minihost::ParameterInfo& parameter) const;

 private:
  struct Entry {
    const minihost::ParameterInfo* parameter;
    std::string alone;      // amount
    std::string qualified;  // wiggle/amount
    bool unique;            // whether `alone` is enough

    const std::string& Shortest() const { return unique ? alone : qualified; }
  };
  std::vector<Entry> entries_;
};

}  // namespace cli
