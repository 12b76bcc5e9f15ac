// The worker threads below the solve: exceptions travel, pausing and ending never hang.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "control/paced_thread.hpp"
#include "control/worker_team.hpp"

namespace {

using engine::WorkerTeam;
using namespace std::chrono_literals;

TEST(WorkerTeam, RunsEveryInvitedWorkerOnceAJob) {
    WorkerTeam team(3);
    std::atomic<int> sum{0};
    for (int round = 0; round < 200; ++round) {
        team.start(2, [&](int k) { sum += k + 1; });
        team.finish();
    }
    EXPECT_EQ(sum, 200 * 3);
}

TEST(WorkerTeam, TheFirstWorkersExceptionArrivesAndTheTeamGoesOn) {
    WorkerTeam team(3);
    team.start(3, [](int k) {
        if (k > 0) throw std::runtime_error("worker " + std::to_string(k));
    });
    try {
        team.finish();
        FAIL() << "nothing arrived";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "worker 1");
    }
    team.start(3, [](int) {});
    EXPECT_NO_THROW(team.finish());
}

TEST(WorkerTeam, PausesAWorkerThatAsksAndIsPatientWithOneThatDoesNot) {
    WorkerTeam team(2);
    std::atomic<bool> isOver{false};
    std::atomic<int> nbSteps{0};
    team.start(2, [&](int k) {
        while (!isOver) {
            if (k == 0) team.parkIfPaused();
            if (k == 0) ++nbSteps;
        }
    });
    team.pause(10ms);  // worker 1 never parks: the wait ends by patience
    while (true) {     // until worker 0 has parked
        const int seen = nbSteps;
        if (!team.waitUntil(WorkerTeam::Clock::now() + 20ms) && nbSteps == seen) break;
    }
    team.resume();
    const int parkedAt = nbSteps;
    while (nbSteps == parkedAt) std::this_thread::yield();
    isOver = true;
    team.finish();
}

TEST(PacedThread, GoesOnWhereItWasHeldAndEndsWhenTold) {
    int nbSteps = 0;  // no atomic: only who has the turn touches it
    bool mustHold = false;
    engine::PacedThread thread(
        [&](engine::Pace& pace) {
            while (pace.spend(3) && !pace.mustEnd()) ++nbSteps;
            nbSteps = -nbSteps;
        },
        [&] { return mustHold; });
    EXPECT_EQ(thread.advance(7), 9) << "in pieces of 3";
    EXPECT_EQ(nbSteps, 2);
    EXPECT_EQ(thread.advance(6), 6);
    EXPECT_EQ(nbSteps, 4);
    mustHold = true;
    EXPECT_EQ(thread.advance(1000), 0) << "held at once";
    EXPECT_FALSE(thread.hasEnded());
    thread.conclude(/*isUrgent=*/false);
    EXPECT_TRUE(thread.hasEnded());
    EXPECT_EQ(nbSteps, -4);
    EXPECT_EQ(thread.advance(10), 0);
}

TEST(PacedThread, ThrowsWhatItsJobThrowsAndEndsOneThatIsHeld) {
    const auto fail = [](engine::Pace& pace) {
        if (pace.spend(1)) throw std::runtime_error("mine");
    };
    engine::PacedThread thread(fail, [] { return false; });
    EXPECT_EQ(thread.advance(1), 1);
    EXPECT_THROW(thread.advance(1), std::runtime_error);
    const engine::PacedThread neverStarted(fail, [] { return false; });
}

TEST(PacedThread, LeavesAJobBehindThatDoesNotAskAndThatEndsByItself) {
    struct Shared {
        std::atomic<bool> hasBegun{false};
        std::atomic<bool> mayAsk{false};
        std::atomic<bool> mustEnd{false};
    };
    const auto shared = std::make_shared<Shared>();
    {
        engine::PacedThread thread(
            [shared](engine::Pace& pace) {
                shared->hasBegun = true;
                while (!shared->mayAsk) std::this_thread::yield();
                shared->mustEnd = !pace.spend(1) && pace.mustEnd() && pace.isUrgent();
            },
            []() -> bool { throw std::logic_error("asked although left behind"); });
        thread.leaveBehind();
        EXPECT_FALSE(thread.isLeftBehind()) << "it rests";
        std::thread waiting([&] { EXPECT_EQ(thread.advance(5), 0); });
        while (!shared->hasBegun) std::this_thread::yield();
        thread.leaveBehind();
        waiting.join();
        EXPECT_TRUE(thread.isLeftBehind());
        thread.conclude(/*isUrgent=*/false);
        EXPECT_FALSE(thread.hasEnded());
    }
    shared->mayAsk = true;
    while (!shared->mustEnd) std::this_thread::yield();
}

}  // namespace
