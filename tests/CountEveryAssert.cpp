// CountEveryAssert.cpp - makes every failed assertion count in the tests.
//
// An assertion site falls silent after its first report, so a test that
// expects an assertion would depend on whether an earlier test had already
// tripped the same site. With failed assertions logged, silenced sites still
// count, whatever order the tests run in.
#include "core/lib/vellum/Assert.h"

#include <gtest/gtest.h>

namespace
{
class CountEveryAssert : public ::testing::Environment
{
public:
    void SetUp() override { LogFailedAsserts_G = true; }
};

const auto* const registered = ::testing::AddGlobalTestEnvironment(new CountEveryAssert);
} // namespace
