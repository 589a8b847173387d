// RefCounter_test.cpp - sharing, unique ownership and release of the counted
// pointer beneath the copy-on-write shapes.
#include "core/lib/vellum/Assert.h"
#include "core/lib/vellum/RefCounter_T.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{
struct Probe
{
    static inline int s_Live = 0;
    explicit Probe(int value) : m_Value(value) { ++s_Live; }
    Probe(const Probe& other) : m_Value(other.m_Value) { ++s_Live; }
    ~Probe() { --s_Live; }
    int m_Value;
};
using ProbePtr = RefCounter_T<Probe>;
} // namespace

TEST(RefCounterTest, CopiesShareOneObjectUntilTheLastGoes)
{
    {
        ProbePtr a(new Probe(5));
        EXPECT_TRUE(a.IsUniqueOwner());
        {
            ProbePtr b(a);
            ProbePtr c;
            c = b;
            EXPECT_EQ(b.Get(), a.Get());
            EXPECT_EQ(c.Get(), a.Get());
            EXPECT_EQ(a.GetShareCount(), 3u);
            EXPECT_FALSE(a.IsUniqueOwner());
            c->m_Value = 9; // a change through one share is seen by all
            EXPECT_EQ((*a).m_Value, 9);
        }
        EXPECT_TRUE(a.IsUniqueOwner());
        EXPECT_EQ(Probe::s_Live, 1);
    }
    EXPECT_EQ(Probe::s_Live, 0);
}

TEST(RefCounterTest, AssignmentReleasesTheOldObject)
{
    ProbePtr a(new Probe(1));
    ProbePtr b(new Probe(2));
    EXPECT_EQ(Probe::s_Live, 2);
    a = b;
    EXPECT_EQ(Probe::s_Live, 1);
    EXPECT_EQ(a->m_Value, 2);
    EXPECT_EQ(b.GetShareCount(), 2u);

    // Assigning the same object changes nothing, self-assignment included.
    a = b;
    auto& alias = a;
    a = alias;
    EXPECT_EQ(b.GetShareCount(), 2u);

    a = ProbePtr();
    EXPECT_TRUE(a.IsNull());
    EXPECT_TRUE(b.IsUniqueOwner());
    EXPECT_EQ(Probe::s_Live, 1);
}

TEST(RefCounterTest, ReleaseAndMove)
{
    // Count failures also at sites that have already reported once.
    const bool oldLog = LogFailedAsserts_G;
    LogFailedAsserts_G = true;
    ProbePtr a(new Probe(3));
    ProbePtr b(a);
    b.Release();
    EXPECT_TRUE(b.IsNull());
    EXPECT_EQ(b.GetShareCount(), 0u);
    EXPECT_TRUE(a.IsUniqueOwner());

    // A copy of a null pointer shares nothing.
    ProbePtr none;
    ProbePtr noneCopy(none);
    EXPECT_TRUE(noneCopy.IsNull());
    EXPECT_FALSE(noneCopy.IsUniqueOwner());

    ProbePtr c(std::move(a));
    EXPECT_TRUE(a.IsNull());
    EXPECT_TRUE(c.IsUniqueOwner());
    c.Release();
    EXPECT_EQ(Probe::s_Live, 0);

    // Releasing a null pointer is a caller's error; it stays null.
    const unsigned long before = GetFailedAssertCount_G();
    c.Release();
    EXPECT_GT(GetFailedAssertCount_G(), before);
    EXPECT_TRUE(c.IsNull());
    LogFailedAsserts_G = oldLog;
}

TEST(RefCounterTest, MakeUniqueOwnerCopiesOnlyWhenShared)
{
    ProbePtr a(new Probe(4));
    Probe* original = a.Get();
    a.MakeUniqueOwner();
    EXPECT_EQ(a.Get(), original);

    ProbePtr b(a);
    b.MakeUniqueOwner();
    EXPECT_NE(b.Get(), original);
    EXPECT_EQ(b->m_Value, 4);
    b->m_Value = 8;
    EXPECT_EQ(a->m_Value, 4);
    EXPECT_TRUE(a.IsUniqueOwner());
    EXPECT_TRUE(b.IsUniqueOwner());
    EXPECT_EQ(Probe::s_Live, 2);
}
