#include "threads/jobthread.h"

#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

namespace tirn {
namespace {

TEST(JobThread, WhatAJobThrowsIsItsFailure)
{
    std::vector<JobResult> results;
    JobReport report;
    report.finished = [&](const JobResult& result) { results.push_back(result); };
    JobThread thread(std::move(report));
    ASSERT_TRUE(thread.startJob([](const Progress&) -> JobResult { throw std::bad_alloc(); }));
    thread.wait();
    EXPECT_FALSE(thread.isBusy());
    ASSERT_TRUE(thread.startJob([](const Progress&) -> JobResult { throw std::runtime_error("it broke"); }));
    thread.wait();
    ASSERT_TRUE(thread.startJob([](const Progress&) { return JobResult(); }));
    thread.wait();
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(results[0].outcome, JobOutcome::Failed);
    EXPECT_EQ(results[0].error, "Could not allocate memory");
    EXPECT_EQ(results[1].error, "it broke");
    EXPECT_EQ(results[2].outcome, JobOutcome::Done);
}

} // namespace
} // namespace tirn
