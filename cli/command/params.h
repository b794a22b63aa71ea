// `vintrel params`: the table of parameters that can be set.
#pragma once

#include <string>

#include "minihost/parameter/info.h"

namespace cli {

/// One line a parameter in columns, below a line of headings.
std::string ParameterTable(const minihost::ParameterList& list);

}  // namespace cli
