// What is wrong with a command line, and what to write instead.
#pragma once

#include <string>
#include <vector>

#include "minihost/parameter/info.h"

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace cli {

/// What a parser that has refused a command line says, with the nearest of what there is.  The parameters are
/// the effect's, whose names are taken for options at times.
std::string Explain(const CLI::App& app, const CLI::ParseError& error,
                    const minihost::ParameterList& parameters);

/// The same of an option that hands know from other programs; empty when there is none among the words after
/// the tool's name.  To be asked before the parser, which takes "-hide_banner" for -h.
std::string ExplainForeign(const CLI::App& app, const std::vector<std::string>& arguments);

}  // namespace cli
