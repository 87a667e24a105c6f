// Which frames a request skips as owed to earlier requests: the frames a
// transport delivers late, after the request that triggered them gave up,
// while frame IDs go on, wrap around or start afresh.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "camera/frame_ledger.h"

namespace tavro::camera {
namespace {

// One step of a camera's life as the ledger sees it.
struct Step {
  enum Kind { kArm, kFire, kPass, kTake, kForgive, kRestart, kStale, kFresh } kind;
  uint64_t id = 0;
};

void Replay(FrameLedger& ledger, const std::vector<Step>& steps) {
  for (size_t k = 0; k < steps.size(); ++k) {
    const Step& step = steps[k];
    SCOPED_TRACE("step " + std::to_string(k) + ", frame " + std::to_string(step.id));
    switch (step.kind) {
      case Step::kArm:
        ledger.Arm();
        break;
      case Step::kFire:
        ledger.Fired();
        break;
      case Step::kPass:
        ledger.Passed(step.id);
        break;
      case Step::kTake:
        ledger.Taken(step.id);
        break;
      case Step::kForgive:
        ledger.Forgive();
        break;
      case Step::kRestart:
        ledger.Restarted();
        break;
      case Step::kStale:
        EXPECT_TRUE(ledger.IsStale(step.id));
        break;
      case Step::kFresh:
        EXPECT_FALSE(ledger.IsStale(step.id));
        break;
    }
  }
}

TEST(FrameLedger, SkipsExactlyTheFramesOwedToEarlierRequests) {
  constexpr uint64_t kTop = UINT64_MAX;
  using S = Step;
  struct Case {
    const char* what;
    std::vector<Step> steps;
  };
  const std::vector<Case> cases = {
      {"nothing seen yet: any frame is the request's",
       {{S::kArm}, {S::kFire}, {S::kFresh, 0}, {S::kFresh, 77}}},
      {"the session's first frame, returned at the arm, pays its trigger",
       {{S::kArm}, {S::kFire}, {S::kArm}, {S::kPass, 40}, {S::kArm}, {S::kFire}, {S::kFresh, 41}}},
      {"a restart forgets triggers whose frames it discarded",
       {{S::kArm},
        {S::kFire},
        {S::kRestart},
        {S::kArm},
        {S::kFire},
        {S::kPass, 40},
        {S::kArm},
        {S::kFire},
        {S::kFresh, 41}}},
      {"one frame per request",
       {{S::kArm}, {S::kFire}, {S::kTake, 10}, {S::kArm}, {S::kFire}, {S::kFresh, 11}}},
      {"a timed-out request's late frame is skipped, the next one taken",
       {{S::kArm},
        {S::kFire},
        {S::kTake, 10},
        {S::kArm},
        {S::kFire},  // 11 never came
        {S::kArm},
        {S::kFire},
        {S::kStale, 11},
        {S::kPass, 11},
        {S::kFresh, 12}}},
      {"the late frame was lost: the next frame is the request's",
       {{S::kArm},
        {S::kFire},
        {S::kTake, 10},
        {S::kArm},
        {S::kFire},
        {S::kArm},
        {S::kFire},
        {S::kFresh, 12}}},
      {"late frames returned at the arm owe nothing more",
       {{S::kArm},
        {S::kFire},
        {S::kTake, 10},
        {S::kArm},
        {S::kFire},
        {S::kArm},
        {S::kFire},
        {S::kPass, 11},
        {S::kPass, 12},
        {S::kArm},
        {S::kFire},
        {S::kFresh, 13}}},
      {"IDs wrap around",
       {{S::kArm},
        {S::kFire},
        {S::kTake, kTop - 1},
        {S::kArm},
        {S::kFire},
        {S::kArm},
        {S::kFire},
        {S::kStale, kTop},
        {S::kFresh, 0}}},
      {"a camera that numbers afresh is not held back",
       {{S::kArm},
        {S::kFire},
        {S::kTake, 5000},
        {S::kArm},
        {S::kFire},
        {S::kArm},
        {S::kFire},
        {S::kFresh, 0},
        {S::kFresh, 1}}},
      {"an ignored trigger misleads one request, not the next",
       {{S::kArm},
        {S::kFire},
        {S::kTake, 10},
        {S::kArm},
        {S::kFire},  // ignored: no ID
        {S::kArm},
        {S::kFire},
        {S::kStale, 11},
        {S::kPass, 11},
        {S::kForgive},  // timed out
        {S::kArm},
        {S::kFire},
        {S::kFresh, 12}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    FrameLedger ledger;
    Replay(ledger, c.steps);
  }
}

}  // namespace
}  // namespace tavro::camera
