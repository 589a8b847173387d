// Tests of the string semantics the readers depend on: exact versus
// case-insensitive comparison, map order, the npos idioms, formatting and
// byte-transparent conversion.
#include "core/lib/vellum/AString.h"
#include "core/lib/vellum/LongFileName.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>

TEST(AString, ComparisonsExactAndWithoutCase)
{
    const AString a(L"Signal"), b(L"SIGNAL");
    EXPECT_EQ(a.CompareNoCase(b), 0);
    EXPECT_FALSE(a == b);
    EXPECT_NE(a.Compare(b), 0);
    EXPECT_EQ(a.Compare(AString(L"Signal")), 0);
    EXPECT_NE(AString(L"Signal").CompareNoCase(L"Signals"), 0);
    EXPECT_TRUE(a == L"Signal");
    EXPECT_TRUE(a != L"signal");
    // Only A-Z fold: a byte above 127 is compared as it is.
    EXPECT_NE(AString("\xC4").CompareNoCase(AString("\xE4")), 0);

    // Code-unit order: 'Z' before 'a'; a set keeps both cases as two entries.
    std::set<AString> names{L"a", L"A", L"Z", L"b"};
    ASSERT_EQ(names.size(), 4u);
    std::vector<AString> order(names.begin(), names.end());
    EXPECT_EQ(order, (std::vector<AString>{L"A", L"Z", L"a", L"b"}));
    std::map<AString, int> m;
    m[L"Net"] = 1;
    EXPECT_EQ(m.count(L"NET"), 0u);
}

TEST(AString, PositionIdioms)
{
    const AString pin(L"U1-3");
    EXPECT_EQ(pin.substr(0, pin.find(L'-', 0)), AString(L"U1"));
    const AString plain(L"U12");
    EXPECT_EQ(plain.substr(0, plain.find(L'-', 0)), plain);
    // A missing character read into a 32-bit int is -1.
    const int missing = static_cast<int>(plain.find(L'-', 0));
    EXPECT_EQ(missing, -1);
    EXPECT_EQ(
        AString(L"SIGNAL_12").substr(AString(L"SIGNAL_12").rfind(L'_', AString::npos) + 1, AString::npos),
        AString(L"12"));
    EXPECT_EQ(plain.substr(plain.rfind(L'_', AString::npos) + 1, AString::npos), plain);
    EXPECT_EQ(plain.substr(7, 2), AString());

    AString nul;
    nul.assign(1, 0);
    EXPECT_EQ(nul.size(), 1u);
    EXPECT_FALSE(nul.empty());
}

TEST(AString, FormatAndNumbers)
{
    AString s(L"old text");
    s.Format(L"%s_%d", L"PLANE", 3);
    EXPECT_EQ(s, AString(L"PLANE_3"));
    s.Format(L"%s_XTRA_%d", AString(L"PS1").c_str(), 12);
    EXPECT_EQ(s, AString(L"PS1_XTRA_12"));
    s.Format(L"[%5s|%-4d|%%|%8.8x]", L"ab", -7, 0xbeefu);
    EXPECT_EQ(s, AString(L"[   ab|-7  |%|0000beef]"));

    long v = 99;
    EXPECT_TRUE(AString(L"-42").IsNumber(v, 10));
    EXPECT_EQ(v, -42);
    EXPECT_FALSE(AString(L"4a").IsNumber(v, 10));
    EXPECT_FALSE(AString(L"").IsNumber(v, 10));
    EXPECT_FALSE(AString(L"99999999999999999999999").IsNumber(v, 10));
    EXPECT_EQ(v, -42);
}

TEST(AString, WildcardMatch)
{
    EXPECT_TRUE(AString(L"  .UNITS MM\r").Match(L"*UNITS*"));
    EXPECT_FALSE(AString(L"UNIT").Match(L"*UNITS*"));
    EXPECT_TRUE(AString(L"A1_2").Match(AString(L"A1") + L"_*"));
    EXPECT_FALSE(AString(L"A12").Match(L"A1_*"));
    EXPECT_TRUE(AString(L"").Match(L"*"));
    EXPECT_FALSE(AString(L"units").Match(L"*UNITS*"));
}

TEST(AString, BytesPassThroughUnchanged)
{
    std::string bytes;
    for (int i = 1; i < 256; ++i)
        bytes.push_back(static_cast<char>(i));
    const AString wide(bytes.c_str());
    ASSERT_EQ(wide.size(), 255u);
    EXPECT_EQ(wide.AsAnsi().str(), bytes);
    EXPECT_EQ(AString(L"PAD").ToLower(), AString(L"pad"));
}

TEST(LongFileName, PartsOfAName)
{
    LongFileName out(AString(L"/tmp/jobs/board.txt"));
    out.ChangeExt(GetFileExtension(3));
    EXPECT_EQ(out.GetPath(), AString(L"/tmp/jobs/board.tnf"));
    EXPECT_EQ(out.NameWithExt(), AString(L"board.tnf"));

    LongFileName bare(AString(L"dir.v2/board"));
    bare.ChangeExt(L".tnf");
    EXPECT_EQ(bare.GetPath(), AString(L"dir.v2/board.tnf"));
    LongFileName windows(AString(L"C:\\out\\my board.v1.TNF"));
    windows.ChangeExt(L"tnf");
    EXPECT_EQ(windows.NameWithExt(), AString(L"my board.v1.tnf"));
    EXPECT_EQ(LongFileName(AString(L"/definitely/not/here.hkp")).Exists(), 0u);
    EXPECT_EQ(LongFileName(AString(L"/tmp")).Exists(), 0u); // a directory is no file
}
