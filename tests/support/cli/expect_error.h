// Says that a call is refused with this exit code and a message that has this in it.
#pragma once

#include <gmock/gmock.h>

#include <string>

#include "cli/report/error.h"

template <class Call>
void ExpectError(cli::ExitCode code, const std::string& part, Call&& call) {
  try {
    call();
    ADD_FAILURE() << "was not refused; expected: " << part;
  } catch (const cli::ToolError& error) {
    EXPECT_EQ(error.Code(), code) << error.what();
    EXPECT_THAT(error.what(), testing::HasSubstr(part));
  }
}
