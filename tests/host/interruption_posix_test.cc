#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <future>

#include "host/platform/interruption.h"

namespace corvo::telemetry::host {
namespace {

using testing::ExitedWithCode;
using testing::KilledBySignal;

/// Has the signal sent to this process within a scope; what the scope's function was called with, 0 when not at all.
int SignalWithinAScope(int number) {
  int called_with = 0;
  {
    const InterruptionScope scope([&called_with](int first) { called_with = first; });
    raise(number);
  }
  return called_with;
}

[[noreturn]] void Exit(bool good) { _exit(good ? 0 : 1); }

std::string NameOfSignal(const testing::TestParamInfo<int>& signal) {
  return signal.param == SIGHUP ? "HangUp" : signal.param == SIGINT ? "Interrupt" : "Terminate";
}

class Interruption : public testing::TestWithParam<int> {};

TEST_P(Interruption, TheFirstCallsTheFunctionAndTheProcessGoesOn) {
  EXPECT_EXIT(Exit(SignalWithinAScope(GetParam()) == GetParam() && InterruptionScope::Signal() == GetParam()),
              ExitedWithCode(0), "");
}

class InterruptionAgain : public Interruption {};

TEST_P(InterruptionAgain, TheSecondEndsTheProcessAtOnce) {
  const auto twice = [] {
    std::promise<void> never;
    const InterruptionScope scope([&never](int) { never.get_future().wait(); });
    raise(SIGTERM);
    raise(GetParam());
  };
  EXPECT_EXIT(twice(), KilledBySignal(GetParam()), "");
}

TEST_P(Interruption, AfterTheScopeItEndsTheProcessAsBefore) {
  const auto after_a_scope = [] {
    SignalWithinAScope(SIGTERM);
    raise(GetParam());
  };
  EXPECT_EXIT(after_a_scope(), KilledBySignal(GetParam()), "");
}

TEST_P(Interruption, ThatWasIgnoredBeforeStaysIgnored) {
  const auto ignored = [] {
    signal(GetParam(), SIG_IGN);
    const bool quiet = SignalWithinAScope(GetParam()) == 0 && InterruptionScope::Signal() == 0;
    return quiet && signal(GetParam(), SIG_DFL) == SIG_IGN;
  };
  EXPECT_EXIT(Exit(ignored()), ExitedWithCode(0), "");
}

TEST_P(Interruption, OfAThreadAtWorkCallsTheFunctionMeanwhile) {
  const auto at_work = [] {
    std::promise<int> called;
    const InterruptionScope scope([&called](int first) { called.set_value(first); });
    kill(getpid(), GetParam());
    return called.get_future().get() == GetParam();
  };
  EXPECT_EXIT(Exit(at_work()), ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, Interruption, testing::Values(SIGHUP, SIGINT, SIGTERM), NameOfSignal);
INSTANTIATE_TEST_SUITE_P(Signals, InterruptionAgain, testing::Values(SIGINT, SIGTERM), NameOfSignal);

TEST(InterruptionScope, TakesHangingUpTwiceForOneRequest) {
  const auto twice = [] {
    std::promise<void> told_twice;
    int calls = 0;
    {
      const InterruptionScope scope([&](int) {
        ++calls;
        told_twice.get_future().wait();
      });
      raise(SIGHUP);
      raise(SIGHUP);
      told_twice.set_value();
    }
    return calls == 1 && InterruptionScope::Signal() == SIGHUP;
  };
  EXPECT_EXIT(Exit(twice()), ExitedWithCode(0), "");
}

TEST(InterruptionScope, WithoutARequestCallsNothing) {
  bool called = false;
  {
    const InterruptionScope scope([&called](int) { called = true; });
  }
  EXPECT_FALSE(called);
  EXPECT_EQ(InterruptionScope::Signal(), 0);
}

TEST(InterruptionScope, MayBeginAnew) {
  const auto twice = [] {
    return SignalWithinAScope(SIGTERM) == SIGTERM && SignalWithinAScope(SIGINT) == SIGINT &&
           InterruptionScope::Signal() == SIGINT;
  };
  EXPECT_EXIT(Exit(twice()), ExitedWithCode(0), "");
}

TEST(InterruptionScope, BringsBackTheFormerHandler) {
  const auto with_own_handler = [] {
    static volatile sig_atomic_t own = 0;
    signal(SIGINT, [](int) { own = 1; });
    SignalWithinAScope(SIGINT);
    const bool spared = own == 0;
    raise(SIGINT);
    return spared && own == 1;
  };
  EXPECT_EXIT(Exit(with_own_handler()), ExitedWithCode(0), "");
}

}  // namespace
}  // namespace corvo::telemetry::host
