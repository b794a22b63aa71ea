// Timing several forms of one task in turn, so that a machine that drifts slows all of them alike.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

/// Runs once and returns the seconds of the part that counts.  It prepares and checks
/// outside of those seconds; throws Difference where the result is wrong.
using TimedForm = std::function<double()>;

/// A form gave other bytes than it must.
struct Difference : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// One form's seconds, round by round.
using Samples = std::vector<double>;

/// Runs each form once in each of `rounds` rounds, after `warmUps` more that do not count: forwards in one
/// round and backwards in the next, so that no form always follows the same one.
std::vector<Samples> TimeInTurn(const std::vector<TimedForm>& forms, int rounds, int warmUps);

double Median(Samples samples);

/// Median of the quotients of each round.
double MedianRatio(const Samples& numerators, const Samples& denominators);

/// Processor time of this thread, so that other work on a shared machine counts only by what it takes from
/// the caches.  Asking costs a fraction of a microsecond.
double ThreadSeconds();

template <class Task>
double SecondsOf(Task&& task) {
  const double start = ThreadSeconds();
  task();
  return ThreadSeconds() - start;
}
