#include "minihost/ledger.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "fake_effect.h"
#include "minihost/image.h"

namespace minihost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class LedgerTest : public FakeEffectTest {
 protected:
  // Runs one smart frame of 20 x 20 over a layer of 8 bits.
  RenderResult Render(Instance& instance) {
    Frame frame;
    frame.input = &input_;
    frame.output = &output_;
    return instance.Render(frame);
  }

  Image input_{20, 20, Depth::kBits8};
  Image output_{20, 20, Depth::kBits8};
};

TEST_F(LedgerTest, NamesWhatIsNotBack) {
  const std::pair<Handler, const char*> leaks[] = {
      {[](Call& call) { return call.Acquire<PF_WorldSuite1>(kPFWorldSuite, 1), PF_Err_NONE; },
       "suite \"PF World Suite\" 1"},
      {[](Call& call) { return call.in.utils->host_new_handle(24), PF_Err_NONE; }, "handle \"bytes\" 24"},
      {[](Call& call) {
         PF_EffectWorld world{};
         const auto* suite = call.Acquire<PF_WorldSuite2>(kPFWorldSuite, 2);
         suite->PF_NewWorld(call.in.effect_ref, 3, 3, 0, PF_PixelFormat_ARGB32, &world);
         call.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 2);
         return PF_Err_NONE;
       },
       "world \"bytes a row\" 64"},
      {[](Call& call) {
         PF_ParamDef def;
         return call.in.inter.checkout_param(call.in.effect_ref, kCount, 0, 1, 30, &def);
       },
       "parameter 4"},
  };
  for (const auto& [leak, missing] : leaks) {
    On(PF_Cmd_SMART_RENDER, leak);
    Instance instance(Make());
    EXPECT_EQ(Render(instance).err, PF_Err_NONE);
    EXPECT_EQ(instance.ledger().Outstanding(), 1u);
    EXPECT_THAT(instance.ledger().Missing(), ElementsAre(missing));
    EXPECT_THAT(instance.ledger().faults(), IsEmpty());
  }
}

TEST_F(LedgerTest, RecordsEveryCallAgainstTheRules) {
  const std::pair<std::function<void(Call&)>, const char*> offences[] = {
      {[](Call& c) { EXPECT_NE(c.in.pica_basicP->ReleaseSuite(kPFHandleSuite, 1), 0); }, "PF Handle Suite"},
      {[](Call& c) {
         c.Acquire<void>(kPFWorldSuite, 1);
         c.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 1);
         EXPECT_NE(c.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 1), 0);
       },
       "\"PF World Suite\" 1"},
      {[](Call& c) {
         const PF_Handle handle = c.in.utils->host_new_handle(8);
         c.in.utils->host_dispose_handle(handle);
         c.in.utils->host_dispose_handle(handle);
       },
       "handle"},
      {[](Call& c) {
         void* foreign = nullptr;
         c.in.utils->host_dispose_handle(&foreign);
       },
       "handle"},
      {[](Call& c) {
         const PF_Handle handle = c.in.utils->host_new_handle(8);
         const auto* suite = c.Acquire<PF_HandleSuite1>(kPFHandleSuite, 1);
         EXPECT_EQ(suite->host_lock_handle(handle), *handle);
         suite->host_unlock_handle(handle);
         suite->host_unlock_handle(handle);
         suite->host_dispose_handle(handle);
         c.in.pica_basicP->ReleaseSuite(kPFHandleSuite, 1);
       },
       "not locked"},
      {[](Call& c) {
         PF_ParamDef def{};
         EXPECT_NE(c.in.inter.checkin_param(c.in.effect_ref, &def), PF_Err_NONE);
       },
       "parameter"},
      {[](Call& c) {
         PF_ParamDef def{};
         EXPECT_NE(c.in.inter.checkout_param(c.in.effect_ref, kParameterCount, 0, 1, 30, &def), PF_Err_NONE);
       },
       "parameter 10"},
      {[](Call& c) {
         PF_EffectWorld world = *c.output;
         const auto* suite = c.Acquire<PF_WorldSuite1>(kPFWorldSuite, 1);
         EXPECT_NE(suite->dispose_world(c.in.effect_ref, &world), PF_Err_NONE) << "the host's own";
         c.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 1);
       },
       "world"},
      {[](Call& c) {
         PF_EffectWorld* world = nullptr;
         EXPECT_NE(c.smart().cb->checkout_layer_pixels(c.in.effect_ref, 3, &world), PF_Err_NONE);
       },
       "under the id 3"},
      {[](Call& c) {
         PF_EffectWorld* world = nullptr;
         c.smart().cb->checkout_output(c.in.effect_ref, &world);
         PF_EffectWorld wider = *world;
         ++wider.width;
         EXPECT_NE(c.in.utils->fill(c.in.effect_ref, nullptr, nullptr, &wider), PF_Err_NONE);
       },
       "filled a world"},
      {[](Call& c) {
         PF_EffectWorld* out = nullptr;
         c.smart().cb->checkout_output(c.in.effect_ref, &out);
         PF_EffectWorld deep{};
         const auto* suite = c.Acquire<PF_WorldSuite1>(kPFWorldSuite, 1);
         EXPECT_EQ(suite->new_world(c.in.effect_ref, 20, 20, PF_NewWorldFlag_DEEP_PIXELS, &deep),
                   PF_Err_NONE);
         EXPECT_NE(c.in.utils->copy(c.in.effect_ref, out, &deep, nullptr, nullptr), PF_Err_NONE);
         suite->dispose_world(c.in.effect_ref, &deep);
         c.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 1);
       },
       "different depths"},
      {[](Call& c) { EXPECT_NE(c.in.inter.abort(&c), PF_Err_NONE); }, "effect reference"},
      {[](Call& c) {
         PF_ParamDef def = FakeDefinition(kAmount);
         EXPECT_NE(c.in.inter.add_param(c.in.effect_ref, -1, &def), PF_Err_NONE);
       },
       "declared a parameter"},
  };
  for (const auto& [offend, fault] : offences) {
    On(PF_Cmd_SMART_RENDER, [&offend = offend](Call& call) { return offend(call), PF_Err_NONE; });
    Instance instance(Make());
    EXPECT_EQ(Render(instance).err, PF_Err_NONE);
    EXPECT_THAT(instance.ledger().faults(), ElementsAre(HasSubstr(fault)));
    EXPECT_EQ(instance.ledger().Outstanding(), 0u);
  }
}

TEST_F(LedgerTest, LayersAreAskedForOnceAndAtTheFramesTimeOnly) {
  On(PF_Cmd_SMART_PRE_RENDER, [](Call& c) {
    PF_CheckoutResult result{};
    const auto ask = [&](int index, int id, int time) {
      return c.pre().cb->checkout_layer(c.in.effect_ref, index, id, &c.pre().input->output_request, time, 1,
                                        30, &result);
    };
    EXPECT_EQ(ask(0, 1, 0), PF_Err_NONE);
    EXPECT_EQ(ask(0, 1, 0), PF_Err_BAD_CALLBACK_PARAM);
    EXPECT_EQ(ask(0, 2, 7), PF_Err_BAD_CALLBACK_PARAM);
    EXPECT_EQ(ask(1, 3, 0), PF_Err_BAD_CALLBACK_PARAM);
    return PF_Err{66};
  });
  Instance instance(Make());
  EXPECT_EQ(Render(instance).err, 66);
  EXPECT_THAT(instance.ledger().faults(),
              ElementsAre(HasSubstr("the id 1"), HasSubstr("time 7"), HasSubstr("not there: 1")));
}

TEST_F(LedgerTest, FreesPreRenderDataThatNobodyTook) {
  static int freed = 0;
  freed = 0;
  enum class Kind { kHandle, kFunction, kNeither };
  for (const Kind kind : {Kind::kHandle, Kind::kFunction, Kind::kNeither}) {
    for (const PF_Err preErr : {0, 9}) {
      for (const bool take : {false, true}) {
        if (take && (kind != Kind::kHandle || preErr != 0)) continue;
        On(PF_Cmd_SMART_PRE_RENDER, [=](Call& call) {
          PF_PreRenderOutput& out = *call.pre().output;
          out.result_rect = call.pre().input->output_request.rect;
          static int foreign = 0;
          out.pre_render_data = kind == Kind::kHandle     ? call.in.utils->host_new_handle(32)
                                : kind == Kind::kFunction ? std::malloc(32)
                                                          : &foreign;
          if (kind == Kind::kFunction) {
            out.delete_pre_render_data_func = [](void* data) {
              std::free(data);
              ++freed;
            };
          }
          return preErr;
        });
        On(PF_Cmd_SMART_RENDER, [=](Call& call) {
          void*& data = call.smart().input->pre_render_data;
          EXPECT_NE(data, nullptr);
          if (take) call.in.utils->host_dispose_handle(static_cast<PF_Handle>(data));
          if (take) data = nullptr;
          return PF_Err_NONE;
        });
        Instance instance(Make());
        EXPECT_EQ(Render(instance).err, preErr);
        EXPECT_EQ(instance.ledger().Outstanding(), 0u);
        EXPECT_EQ(instance.ledger().returned(Ledger::Kind::kHandle), kind == Kind::kHandle ? 1u : 0u);
        EXPECT_EQ(instance.ledger().faults().size(), kind == Kind::kNeither ? 1u : 0u);
      }
    }
  }
  EXPECT_EQ(freed, 2);
}

TEST_F(LedgerTest, AHandleKeptBeyondTheSetDownIsMissing) {
  On(PF_Cmd_SEQUENCE_SETUP, [](Call& call) {
    call.out.sequence_data = call.in.utils->host_new_handle(28);
    return PF_Err_NONE;
  });
  Instance instance(Make());
  EXPECT_EQ(instance.ledger().Outstanding(), 0u);
  EXPECT_EQ(instance.Close().err, PF_Err_NONE);
  EXPECT_THAT(instance.ledger().Missing(), ElementsAre("handle \"bytes\" 28"));
}

TEST_F(LedgerTest, RefusesTheServicesItIsToldTo) {
  // Tries everything once and writes down which service said what.
  std::map<Service, PF_Err> said;
  On(PF_Cmd_SMART_RENDER, [&said](Call& c) {
    said.clear();
    PF_EffectWorld *in = nullptr, *out = nullptr, world{};
    said[Service::kCheckoutLayerPixels] = c.smart().cb->checkout_layer_pixels(c.in.effect_ref, 0, &in);
    said[Service::kCheckoutOutput] = c.smart().cb->checkout_output(c.in.effect_ref, &out);
    PF_ParamDef def{};
    said[Service::kCheckoutParam] = c.in.inter.checkout_param(c.in.effect_ref, kAmount, 0, 1, 30, &def);
    if (def.param_type != 0) c.in.inter.checkin_param(c.in.effect_ref, &def);
    const auto* handles = c.Acquire<PF_HandleSuite1>(kPFHandleSuite, 1);
    const PF_Handle handle = handles->host_new_handle(4);
    said[Service::kNewHandle] = handle == nullptr;
    if (handle != nullptr) {
      said[Service::kLockHandle] = handles->host_lock_handle(handle) == nullptr;
      handles->host_dispose_handle(handle);
    }
    const auto* worlds = c.Acquire<PF_WorldSuite1>(kPFWorldSuite, 1);
    said[Service::kNewWorld] = worlds->new_world(c.in.effect_ref, 2, 2, 0, &world);
    const auto* formats = c.Acquire<PF_WorldSuite2>(kPFWorldSuite, 2);
    PF_PixelFormat format = PF_PixelFormat_INVALID;
    if (out != nullptr) {
      said[Service::kPixelFormat] = formats->PF_GetPixelFormat(out, &format);
      said[Service::kFill] = c.in.utils->fill(c.in.effect_ref, nullptr, nullptr, out);
      if (world.data != nullptr) {
        said[Service::kCopy] = c.in.utils->copy(c.in.effect_ref, out, &world, nullptr, nullptr);
      }
      const auto* sampling = c.Acquire<PF_Sampling8Suite1>(kPFSampling8Suite, 1);
      PF_Pixel pixel{};
      const PF_SampPB block{out};
      said[Service::kSubpixelSample] = sampling->subpixel_sample(c.in.effect_ref, 0, 0, &block, &pixel);
      c.in.pica_basicP->ReleaseSuite(kPFSampling8Suite, 1);
    }
    if (world.data != nullptr) said[Service::kDisposeWorld] = worlds->dispose_world(c.in.effect_ref, &world);
    const auto* look = c.Acquire<PF_ParamUtilsSuite1>(kPFParamUtilsSuite, 1);
    said[Service::kUpdateParamUi] = look->PF_UpdateParamUI(c.in.effect_ref, kAmount, c.params[kAmount]);
    for (const auto& [name, version] : {std::pair{kPFHandleSuite, 1}, {kPFParamUtilsSuite, 1}})
      c.in.pica_basicP->ReleaseSuite(name, version);
    for (const int version : {1, 2}) c.in.pica_basicP->ReleaseSuite(kPFWorldSuite, version);
    return PF_Err_NONE;
  });
  Instance instance(Make());
  for (int n = static_cast<int>(Service::kCheckoutParam); n < kServiceCount; ++n) {
    const auto service = static_cast<Service>(n);
    SCOPED_TRACE(n);
    Faults faults;
    faults.refusals = {{service, 2, service == Service::kCheckoutOutput ? 0 : 1}};
    instance.SetFaults(faults);
    for (const bool refused : {false, true, false}) {
      const RenderResult result = Render(instance);
      if (service == Service::kCheckoutLayer) {
        EXPECT_EQ(result.err, refused ? 1 : 0);
      } else if (service == Service::kCheckoutOutput) {
        EXPECT_EQ(said.count(Service::kFill), refused ? 0u : 1u) << "claims success and lends nothing";
      } else {
        EXPECT_EQ(said[service], refused ? 1 : 0);
      }
      EXPECT_EQ(instance.ledger().Outstanding(), 0u);
    }
  }
  EXPECT_THAT(instance.ledger().faults(), IsEmpty());
}

TEST_F(LedgerTest, MayLackSuitesAndHandles) {
  On(PF_Cmd_SEQUENCE_FLATTEN, [](Call& c) {
    EXPECT_EQ(c.Acquire<void>(kPFWorldSuite, 2), nullptr);
    EXPECT_EQ(c.Acquire<void>(kPFWorldSuite, 3), nullptr);
    EXPECT_EQ(c.Acquire<void>("pf world suite", 1), nullptr);
    EXPECT_EQ(c.in.utils->host_new_handle, nullptr);
    EXPECT_EQ(c.in.utils->host_dispose_handle, nullptr);
    EXPECT_NE(c.Acquire<void>(kPFWorldSuite, 1), nullptr);
    return c.in.pica_basicP->ReleaseSuite(kPFWorldSuite, 1);
  });
  Faults faults;
  faults.missingSuites = {{kPFWorldSuite, 2}};
  faults.noHandleCallbacks = true;
  const auto effect = Make();
  Instance instance(effect, ParameterSet(effect->sharedParameters()), faults);
  EXPECT_EQ(instance.Send(PF_Cmd_SEQUENCE_FLATTEN).err, PF_Err_NONE);
  On(PF_Cmd_SEQUENCE_FLATTEN, [](Call& c) {
    EXPECT_EQ(c.in.pica_basicP, nullptr);
    return PF_Err_NONE;
  });
  faults.noBasicSuite = true;
  instance.SetFaults(faults);
  instance.Send(PF_Cmd_SEQUENCE_FLATTEN);
  EXPECT_EQ(instance.ledger().Outstanding(), 0u);
}

}  // namespace
}  // namespace minihost
