#include "minihost/ledger.h"

#include <algorithm>
#include <string_view>

namespace minihost {
namespace {

std::string Describe(Ledger::Kind kind, const char* name, std::int64_t number) {
  constexpr std::string_view kKinds[] = {"suite", "handle", "world", "parameter", "layer"};
  std::string text(kKinds[static_cast<std::size_t>(kind)]);
  if (name != nullptr) {
    text.append(" \"").append(name).append("\"");
  }
  return text + " " + std::to_string(number);
}

}  // namespace

void Ledger::Lend(Kind kind, const void* key, const char* name, std::int64_t number) {
  loans_.push_back({kind, key, name, number});
}

bool Ledger::Return(Kind kind, const void* key, const char* name, std::int64_t number) {
  const auto loan = std::find_if(loans_.rbegin(), loans_.rend(), [kind, key](const Loan& open) {
    return open.kind == kind && open.key == key;
  });
  if (loan == loans_.rend()) {
    AddFault("returned what is not on loan: " + Describe(kind, name, number));
    return false;
  }
  loans_.erase(std::next(loan).base());
  return true;
}

void Ledger::ReturnAll(Kind kind) noexcept {
  std::erase_if(loans_, [kind](const Loan& loan) { return loan.kind == kind; });
}

bool Ledger::IsKept(const Loan& loan) const noexcept {
  return loan.kind == Kind::kHandle && std::find(kept_.begin(), kept_.end(), loan.key) != kept_.end();
}

std::size_t Ledger::Outstanding() const noexcept {
  return static_cast<std::size_t>(
      std::count_if(loans_.begin(), loans_.end(), [this](const Loan& loan) { return !IsKept(loan); }));
}

std::vector<std::string> Ledger::Missing() const {
  std::vector<std::string> lines;
  for (const Loan& loan : loans_) {
    if (!IsKept(loan)) {
      lines.push_back(Describe(loan.kind, loan.name, loan.number));
    }
  }
  return lines;
}

}  // namespace minihost
