// What is wrong with a command line, and what to write instead.
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace cli {

/// What a parser that has refused a command line says, with the nearest of what there is.
std::string Explain(const CLI::App& app, const CLI::ParseError& error);

}  // namespace cli
