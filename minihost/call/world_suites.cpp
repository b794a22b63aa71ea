#include "minihost/call/world_suites.h"

#include <optional>

#include "minihost/call/answer.h"

namespace minihost {
namespace {

PF_Err NewWorldOf(PF_ProgPtr effect_ref, int width, int height, Depth depth, Clearing clearing,
                  PF_EffectWorld* world) noexcept {
  return Answer(WithGiven(Command::Named(effect_ref), world), [&](Command& command) {
    Session& session = command.session;
    if (const auto refusal = session.faults.Refuses(Service::kNewWorld)) {
      *world = PF_EffectWorld{};
      return *refusal;
    }
    session.worlds.New(width, height, depth, clearing, *world);
    session.ledger.Lend(Ledger::Kind::kWorld, world->data, "bytes a row", world->rowbytes);
    return PF_Err_NONE;
  });
}

// Both versions know the worlds of both.  A refused call disposes of the world all the same.
PF_Err DisposeWorld(PF_ProgPtr effect_ref, PF_EffectWorld* world) noexcept {
  return Answer(WithGiven(Command::Named(effect_ref), world), [&](Command& command) {
    Session& session = command.session;
    const std::optional<PF_Err> refusal = session.faults.Refuses(Service::kDisposeWorld);
    const bool known = session.ledger.Return(Ledger::Kind::kWorld, world->data, nullptr, world->rowbytes);
    if (known) {
      session.worlds.Dispose(*world);
    }
    return refusal.value_or(known ? PF_Err_NONE : PF_Err_BAD_CALLBACK_PARAM);
  });
}

PF_Err NewWorld1(PF_ProgPtr effect_ref, std::int32_t width, std::int32_t height, PF_NewWorldFlags flags,
                 PF_EffectWorld* world) noexcept {
  const Depth depth = (flags & PF_NewWorldFlag_DEEP_PIXELS) != 0 ? Depth::kBits16 : Depth::kBits8;
  const bool clear = (flags & PF_NewWorldFlag_CLEAR_PIXELS) != 0;
  return NewWorldOf(effect_ref, width, height, depth, clear ? Clearing::kTransparentBlack : Clearing::kNone,
                    world);
}

std::optional<Depth> DepthOfFormat(PF_PixelFormat format) noexcept {
  for (const Depth depth : {Depth::kBits8, Depth::kBits16, Depth::kFloat}) {
    if (PixelFormatOf(depth) == format) {
      return depth;
    }
  }
  return std::nullopt;
}

PF_Err NewWorld2(PF_ProgPtr effect_ref, std::int32_t width, std::int32_t height, PF_Boolean clear,
                 PF_PixelFormat format, PF_EffectWorld* world) noexcept {
  const std::optional<Depth> depth = DepthOfFormat(format);
  if (!depth) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  return NewWorldOf(effect_ref, width, height, *depth,
                    clear != 0 ? Clearing::kTransparentBlack : Clearing::kNone, world);
}

PF_Err GetPixelFormat(const PF_EffectWorld* world, PF_PixelFormat* format) noexcept {
  Command* given = WithGiven(Command::Current(), world, format);
  return Answer(given, Service::kPixelFormat, [&](Command& command) {
    const std::optional<Depth> depth = command.session.worlds.DepthOf(*world);
    if (!depth) {
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    *format = PixelFormatOf(*depth);
    return PF_Err_NONE;
  });
}

}  // namespace

const PF_WorldSuite1 kWorldSuite1{NewWorld1, DisposeWorld};
const PF_WorldSuite2 kWorldSuite2{NewWorld2, DisposeWorld, GetPixelFormat};

}  // namespace minihost
