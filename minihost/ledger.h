// What the host has lent to the effect and has not got back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace minihost {

/// Between two commands everything is back, but for handles that the host keeps on the effect's behalf (the
/// sequence data, and the pre-render data between the two steps of a frame): `Outstanding()` is 0 and
/// `Faults()` is empty.  Kept by the host for each instance; read it between commands only.
class Ledger {
 public:
  enum class Kind { kSuite, kHandle, kWorld, kParameter, kLayer };

  /// Loans that are open, without those the host keeps.
  std::size_t Outstanding() const noexcept;

  /// One line for each open loan, such as `suite "PF World Suite" 2`, without those the host keeps.
  std::vector<std::string> Missing() const;

  /// What the effect did against the rules, such as to give back what was not on loan, or to render more than
  /// was asked for.  In the order it happened.
  const std::vector<std::string>& Faults() const noexcept { return faults_; }

  // The host's side.

  /// Opens a loan.  `key` tells loans of one kind apart; `name` (a string that outlives the ledger, or null)
  /// and `number` describe it.
  void Lend(Kind kind, const void* key, const char* name, std::int64_t number);

  /// Closes the youngest loan with this key and returns true, or records a fault and returns false.
  bool Return(Kind kind, const void* key, const char* name, std::int64_t number);

  /// Closes every loan of this kind: those that last until the end of a command.
  void ReturnAll(Kind kind) noexcept;

  /// Says which open handles the host keeps from here on; null entries are none.
  void SetKept(std::array<const void*, 2> handles) noexcept { kept_ = handles; }

  /// `text` says what the effect did, without a full stop.
  void AddFault(std::string text) { faults_.push_back(std::move(text)); }

 private:
  struct Loan {
    Kind kind;
    const void* key;
    const char* name;
    std::int64_t number;
  };

  bool IsKept(const Loan& loan) const noexcept;

  std::vector<Loan> loans_;
  std::array<const void*, 2> kept_{};
  std::vector<std::string> faults_;
};

}  // namespace minihost
