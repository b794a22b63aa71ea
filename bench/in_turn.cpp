#include "bench/in_turn.h"

#include <time.h>

#include <algorithm>
#include <cstddef>

std::vector<Samples> TimeInTurn(const std::vector<TimedForm>& forms, int rounds, int warmUps) {
  std::vector<Samples> samples(forms.size());
  for (int round = -warmUps; round < rounds; ++round) {
    for (std::size_t turn = 0; turn < forms.size(); ++turn) {
      const std::size_t form = round % 2 == 0 ? turn : forms.size() - 1 - turn;
      const double seconds = forms[form]();
      if (round >= 0) {
        samples[form].push_back(seconds);
      }
    }
  }
  return samples;
}

double Median(Samples samples) {
  std::sort(samples.begin(), samples.end());
  const std::size_t middle = samples.size() / 2;
  return samples.size() % 2 == 1 ? samples[middle] : 0.5 * (samples[middle - 1] + samples[middle]);
}

double MedianRatio(const Samples& numerators, const Samples& denominators) {
  Samples ratios;
  for (std::size_t i = 0; i < numerators.size(); ++i) {
    ratios.push_back(numerators[i] / denominators[i]);
  }
  return Median(ratios);
}

double ThreadSeconds() {
  timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}
