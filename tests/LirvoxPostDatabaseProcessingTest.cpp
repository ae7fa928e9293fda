// From the store's answer to the delegate.
#include "lib/Lirvox.h"
#include "lib/LirvoxPostDatabaseProcessing.h"
#include "tests/support/RecordedDelegate.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

using namespace std::chrono_literals;
using Calls = std::vector<RecordedDelegate::Call>;

struct Delivery : testing::Test {
  Delivery() {
    lirvox_->setDelegate(delegate_);
    lirvox_->setMinimumFindedCnt(0);
    lirvox_->setTimeStartListening(platform_.scheduler.clock()->now());
  }

  static void deliver(std::int32_t id, std::int32_t time) {
    LirvoxPostDatabaseProcessing::deliver(
        LirvoxResult{DecimalString(id), DecimalString(40), DecimalString(time), DecimalString(50)});
  }

  // A pass in which track 5 has `votes` votes at offset 1000.
  static void process(std::int32_t votes) {
    const LirvoxRowMap rows({{DecimalString(5), DecimalString(1007), DecimalString(9)}});
    LirvoxPostDatabaseProcessing::processResult(
        &rows, std::vector<QueryHash>(static_cast<std::size_t>(votes), {7, 9}));
  }

  TestPlatform platform_;
  const std::shared_ptr<Lirvox> lirvox_ = Lirvox::sharedInstance();
  const std::shared_ptr<RecordedDelegate> delegate_ = std::make_shared<RecordedDelegate>();
};

TEST_F(Delivery, ComputesOffsetsInSinglePrecision) {
  platform_.scheduler.advance(2500ms);
  deliver(1, 0);
  deliver(2, 1000);
  deliver(-3, -100);
  // As a float the time is 16777216, and the product is rounded once more.
  deliver(4, 16777217);
  EXPECT_EQ(delegate_->calls(), (Calls{{1, 0.0F, 2.5F},
                                       {2, 23.2199554F, 25.7199554F},
                                       {-3, -2.32199550F, 0.178004503F},
                                       {4, 389566.188F, 389568.688F}}));
  // A clock that is set back moves the relative offset alone.
  lirvox_->setTimeStartListening(platform_.scheduler.clock()->now() + 1h);
  deliver(5, 1000);
  EXPECT_EQ(delegate_->calls().back(), (Calls::value_type{5, 23.2199554F, -3576.78004F}));
}

TEST_F(Delivery, CannotTellTrackZeroFromNothingAndCallsNobodyWithoutADelegate) {
  for (const auto& delegate : {delegate_, std::shared_ptr<RecordedDelegate>()}) {
    lirvox_->setDelegate(delegate);
    deliver(0, 100);
    LirvoxPostDatabaseProcessing::deliver(std::nullopt);
    EXPECT_EQ(delegate_->calls(), (Calls{{}, {}}));
  }
}

TEST_F(Delivery, WantsMoreVotesThanTheMinimum) {
  // A minimum of 0 is the default of 30.
  const std::tuple<std::int32_t, std::int32_t, bool> cases[] = {
      {0, 0, false}, {0, 30, false}, {0, 31, true}, {5, 5, false}, {5, 6, true}, {1, 4, false}};
  for (const auto& [minimum, votes, recognized] : cases) {
    lirvox_->setMinimumFindedCnt(minimum);
    process(votes);
    platform_.scheduler.run();
    EXPECT_EQ(delegate_->takeCalls().at(0).trackId, recognized ? 5 : 0) << votes;
  }
  LirvoxPostDatabaseProcessing::processResult(nullptr, {{1, 2}});
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->calls(), Calls{{}});
}

TEST_F(Delivery, SaysWhenADatabaseHasTooManyRowsForWhatWasHeard) {
  const LirvoxRowMap rows(
      std::vector<LirvoxDBRow>(3000, {DecimalString(5), DecimalString(1007), DecimalString(9)}));
  for (const std::size_t heard : {100U, 3000U}) {
    EXPECT_FALSE(platform_.log->has("too many rows"));
    LirvoxPostDatabaseProcessing::processResult(&rows, std::vector<QueryHash>(heard, {7, 9}));
    platform_.scheduler.run();
  }
  EXPECT_TRUE(platform_.log->has("too many rows"));
  EXPECT_EQ(delegate_->calls().at(1).trackId, 5);
}

TEST_F(Delivery, ReadsDelegateAndStartWhenTheMainQueueGetsToIt) {
  process(31);
  EXPECT_EQ(delegate_->calls(), Calls());
  const auto other = std::make_shared<RecordedDelegate>();
  lirvox_->setDelegate(other);
  lirvox_->setTimeStartListening(platform_.scheduler.clock()->now() - 4s);
  platform_.scheduler.run();
  EXPECT_EQ(delegate_->calls(), Calls());
  EXPECT_EQ(other->calls(), (Calls{{5, 23.2199554F, 27.2199554F}}));
}

}  // namespace
}  // namespace lirvox::test
