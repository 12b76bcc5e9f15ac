#include "norv/environment.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

#include "hostapi/codes.hpp"
#include "norv/host_operations.hpp"

namespace {

using hosttest::hub;

struct Streams {
    norv::Environment environment;
    std::string log;
    std::string status;

    Streams() {
        environment.setLogSink([this](std::string_view text) { log += text; });
        environment.setStatusSink([this](std::string_view text) { status += text; });
    }
};

TEST(Environment, WritesEachTextToItsStreams) {
    Streams s;
    const auto nev = s.environment.handle();
    hub().nevLogStat(nev, "both");
    hub().nevLogStatPChar(nev, "both, ");
    hub().nevLog(nev, "log");
    hub().nevLogPChar(nev, "log, ");
    hub().nevStatAudit(nev, "audit");
    EXPECT_EQ(s.log, "both\nboth, log\nlog, ");
    EXPECT_EQ(s.status, "both\nboth, audit\n");
}

TEST(Environment, EchoesTheLogInTheStatusStreamBetweenOnAndOff) {
    Streams s;
    const auto nev = s.environment.handle();
    hub().nevStatCon(nev);
    hub().nevStatCon(nev);
    hub().nevLog(nev, "echoed");
    hub().nevLogStat(nev, "once");
    hub().nevStatCoff(nev);
    hub().nevLog(nev, "not echoed");
    EXPECT_EQ(s.status, "echoed\nonce\n");
}

TEST(Environment, HandsOutItsSettings) {
    Streams s;
    const auto nev = s.environment.handle();
    s.environment.setSystemDirectory("/opt/host");
    s.environment.setTimeLimit(59.9);
    s.environment.setThreads(3);
    char value[256];
    EXPECT_STREQ(hub().nevGetStrOpt(nev, "NAMESYSDIR", value), "/opt/host/");
    EXPECT_EQ(hub().nevGetDblOpt(nev, "reslim"), 59.9);
    EXPECT_EQ(hub().nevGetIntOpt(nev, "IterLim"), hostapi::noIterationLimit);
    EXPECT_EQ(hub().nevThreads(nev), 3);
    s.environment.setSystemDirectory("/opt/host/");
    EXPECT_STREQ(hub().nevGetStrOpt(nev, "NameSysDir", value), "/opt/host/");
    EXPECT_EQ(s.log, "");

    EXPECT_STREQ(hub().nevGetStrOpt(nev, "ResLim", value), "");
    EXPECT_EQ(s.log, "hubdclib64: CnevGetStrOpt: there is no text setting \"ResLim\"\n");
}

TEST(Environment, RefusesSettingsThatMeanNothing) {
    norv::Environment environment;
    EXPECT_THROW(environment.setTimeLimit(-1.0), std::invalid_argument);
    EXPECT_THROW(environment.setTimeLimit(std::numeric_limits<double>::quiet_NaN()),
                 std::invalid_argument);
    EXPECT_THROW(environment.setIterationLimit(-1), std::invalid_argument);
    EXPECT_THROW(environment.setThreads(0), std::invalid_argument);
    EXPECT_NO_THROW(environment.setSystemDirectory(std::string(254, 'd')));
    EXPECT_THROW(environment.setSystemDirectory(std::string(255, 'd')), std::length_error);
}

TEST(Environment, ShowsATerminationRequestUntilItIsCleared) {
    norv::Environment environment;
    EXPECT_EQ(hub().nevTerminateGet(environment.handle()), 0);
    environment.requestTermination();
    EXPECT_NE(hub().nevTerminateGet(environment.handle()), 0);
    environment.clearTermination();
    EXPECT_EQ(hub().nevTerminateGet(environment.handle()), 0);
}

TEST(Environment, KeepsTheExceptionsOfItsSinksInside) {
    norv::Environment environment;
    environment.setLogSink([](std::string_view) { throw std::runtime_error("disk full"); });
    testing::internal::CaptureStderr();
    hub().nevLogStat(environment.handle(), "text");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "hubdclib64: CnevLogStat: disk full\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(hub().nevThreads(nullptr), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "hubdclib64: nevThreads: the object is null\n");
}

}  // namespace
