// Tests of the block tree: its text form, sharing of items, and the reader
// that takes back everything the writer writes.
#include "core/lib/vellum/streamio/Block.h"
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

using namespace io;

namespace
{
std::string Text(const CBlock& block, int precision = 10)
{
    CString_ostream out;
    out.SetPrecision(precision);
    out << block;
    return out.str();
}

CBlockPtr ReadBack(const std::string& text, const AString& name = AString())
{
    CToken_istream in(text);
    CBlockPtr block(name);
    in >> *block;
    EXPECT_FALSE(in.fail()) << text;
    return block;
}
} // namespace

TEST(Block, TextFormOfEveryItemKind)
{
    CBlockPtr root(L"TarvexNeutralFile");
    CBlockFuncPtr version(L"Version");
    *version << L"4" << L"0";
    *root << version;
    CBlock_func source(L"Source");
    source << AString(L"MentorExpedition") << AString(L"Version 2002") << AString();
    *root << source;
    *root << CNamed_value_manip<AString>(L"Date", AString(L"Sun Nov 22 21:32:00 2026"));
    CBlockPtr shapes(L"PadShapes");
    CBlockFuncPtr pad(L"'NULLPAD'");
    CBlock_func circle(L"Circle");
    circle << 0.0;
    *pad << circle;
    *shapes << pad;
    *root << shapes << CBlockPtr(L"Symbols");
    CBlockFuncPtr misc(L"Misc");
    *misc << 3 << -0.0 << 1.0 / 3.0 << 1e-12 << true << AString(L"it's a \\ path")
          << CBlock_named_value(L"Terminal", CBlock_value(false));
    *shapes << misc;

    EXPECT_EQ(Text(*root), "$begin 'TarvexNeutralFile'\n"
                           "\tVersion('4', '0')\n"
                           "\tSource('MentorExpedition', 'Version 2002', '')\n"
                           "\tDate='Sun Nov 22 21:32:00 2026'\n"
                           "\t$begin 'PadShapes'\n"
                           "\t\t'NULLPAD'(Circle(0))\n"
                           "\t\tMisc(3, 0, 0.3333333333, 1e-12, true, 'it\\'s a \\\\ path', Terminal=false)\n"
                           "\t$end 'PadShapes'\n"
                           "\t$begin 'Symbols'\n"
                           "\t$end 'Symbols'\n"
                           "$end 'TarvexNeutralFile'\n");
}

TEST(Block, ItemsAreSharedThroughPointersAndCopiedByValue)
{
    CBlockPtr layer(L"Layer");
    CBlockFuncPtr thermal(L"Thermal");
    CBlock_func copied(L"Copied");
    *layer << thermal << copied;
    // Changed after it was added: the tree sees the change of the shared item
    // and not of the copied one.
    *thermal << 0.25;
    copied << 1;
    EXPECT_EQ(Text(*layer), "$begin 'Layer'\n\tThermal(0.25)\n\tCopied()\n$end 'Layer'\n");
    EXPECT_TRUE(thermal->InUse());
}

TEST(Block, ReadsBackWhatItWrites)
{
    CBlockPtr root(L"Planes");
    CBlockPtr shape(L"Shape 1");
    *shape << CBlock_named_value(L"DUMMY_APS", CBlock_value(0));
    CBlockFuncPtr net(L"Net");
    *net << AString(L"GND");
    CBlockFuncPtr seg(L"Seg");
    *seg << 1.25 << -3.5;
    CBlockFuncPtr poly(L"Polygon");
    CBlockFuncPtr vertex(L"vertex");
    *vertex << 0.1 << 7.0;
    CBlockFuncPtr arc(L"Arc");
    *arc << -0.05;
    *poly << vertex << arc << AString(L"") << AString(L"12") << AString(L"a 'quoted', (text)");
    *shape << net << seg << poly << CBlock_value(AString(L"lone value")) << CBlockPtr(L"Empty");
    *root << shape << CBlockPtr(L"Shape 1");
    const std::string text = Text(*root);

    CBlockPtr back = ReadBack(text, L"Planes");
    EXPECT_EQ(Text(*back), text);

    // Kinds and values are there to be asked for.
    auto it = back->begin();
    auto* first = dynamic_cast<CBlock*>(back->Item(it).Item());
    ASSERT_NE(first, nullptr);
    int dummy = -1;
    (void)(*first >> CNamed_value_manip<int>(L"DUMMY_APS", CBlock_value(), &dummy));
    bool ok = false;
    (void)(*first >> CQuery_ok_manip(ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(dummy, 0);
    (void)(*first >> CNamed_value_manip<int>(L"NOT_THERE", CBlock_value(), &dummy));
    (void)(*first >> CQuery_ok_manip(ok));
    EXPECT_FALSE(ok);
    auto child = first->begin();
    ++child;
    auto* netFunc = dynamic_cast<CBlock_func*>(first->Item(child).Item());
    ASSERT_NE(netFunc, nullptr);
    AString netName;
    *netFunc >> netName;
    EXPECT_EQ(netName, AString(L"GND"));
    ++child;
    auto* segFunc = dynamic_cast<CBlock_func*>(first->Item(child).Item());
    ASSERT_NE(segFunc, nullptr);
    double x = 0, y = 0;
    *segFunc >> x >> y;
    EXPECT_EQ(x, 1.25);
    EXPECT_EQ(y, -3.5);
    ++child;
    auto* polyFunc = dynamic_cast<CBlock_func*>(first->Item(child).Item());
    ASSERT_NE(polyFunc, nullptr);
    ASSERT_EQ(polyFunc->GetArgumentCount(), 5u);
    EXPECT_EQ(polyFunc->GetArgumentValue(3).GetKind(), CBlock_value::k_String); // digits stay a string
    EXPECT_EQ(polyFunc->GetArgumentItem(1)->Name(), AString(L"Arc"));
}

TEST(Block, FindsTheNamedBlockAndSurvivesDamage)
{
    const std::string text = "$begin 'Other'\n\tX(1)\n\t$begin 'Planes'\n\t$end 'Planes'\n$end 'Other'\n"
                             "$begin 'Planes'\n\tNet('A')\n$end 'Planes'\n";
    CBlockPtr planes = ReadBack(text, L"Planes");
    ASSERT_EQ(planes->size(), 1u);
    EXPECT_EQ(planes->Item(planes->begin())->Name(), AString(L"Net"));

    // Unterminated and malformed text ends the block without a fault.
    CBlockPtr broken = ReadBack("$begin 'B'\n\tF(1, 'open\n\tG((((\n\t=\n\t$begin 'C'\n", L"B");
    EXPECT_GE(broken->size(), 1u);

    CToken_istream none(std::string("no block here\n"));
    CBlock absent(L"Planes");
    none >> absent;
    EXPECT_TRUE(none.fail());
    EXPECT_TRUE(absent.empty());
}

namespace
{
// A tree of up to 30 random items: blocks, functions with numbers, texts,
// bools and nested functions, and named values.
CBlockPtr RandomTree(std::mt19937& random)
{
    const wchar_t* names[] = {L"vertex", L"Arc", L"Net", L"Pad 20x30", L"'Q'", L"Via"};
    CBlockPtr root(L"Root");
    std::vector<CBlockPtr> open{root};
    const int items = static_cast<int>(random() % 30);
    for (int i = 0; i < items; ++i)
    {
        CBlock& parent = *open[random() % open.size()];
        switch (random() % 4)
        {
        case 0:
        {
            CBlockPtr child(AString(names[random() % 6]));
            parent << child;
            open.push_back(child);
            break;
        }
        case 1:
        {
            CBlockFuncPtr func(AString(names[random() % 6]));
            for (int a = static_cast<int>(random() % 4); a > 0; --a)
            {
                const unsigned pick = random() % 5;
                if (pick == 0)
                    *func << static_cast<int>(random()) - 1000000;
                else if (pick == 1)
                    *func << std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 40) - 50);
                else if (pick == 2)
                    *func << AString(L"s'\\, )(") + AString(names[random() % 6]);
                else if (pick == 3)
                {
                    CBlock_func nested(L"vertex");
                    nested << 1.5 << 2;
                    *func << nested;
                }
                else
                    *func << (random() % 2 == 0);
            }
            parent << func;
            break;
        }
        case 2:
            parent << CBlock_named_value(L"Id", CBlock_value(static_cast<int>(random() % 1000)));
            break;
        default:
            parent << CBlock_named_value(L"Name", CBlock_value(AString(L"x = 'y'")));
            break;
        }
    }
    return root;
}
} // namespace

TEST(Block, RandomTreesRoundTrip)
{
    std::mt19937 random(20261122);
    for (int round = 0; round < 200; ++round)
    {
        const std::string text = Text(*RandomTree(random));
        EXPECT_EQ(Text(*ReadBack(text, L"Root")), text);
    }
}

namespace
{
// Hands the children of a tree to a stream block, nested blocks alternately
// as streams of their own and as whole blocks.
void StreamChildren(CBlock_stream& parent, const CBlock& block, bool& nestedAsStream)
{
    for (auto it = block.begin(); it != block.end(); ++it)
    {
        CBlock_item* item = block.Item(it).Item();
        if (item->IsBlock())
        {
            auto* child = static_cast<CBlock*>(item);
            nestedAsStream = !nestedAsStream;
            if (!nestedAsStream)
            {
                parent << CBlockPtr(child);
                continue;
            }
            CBlock_stream nested(parent, child->Name());
            StreamChildren(nested, *child, nestedAsStream);
        }
        else if (item->IsFunc())
            parent << *static_cast<CBlock_func*>(item);
        else
            parent << *static_cast<CBlock_named_value*>(item);
    }
}
} // namespace

// A tree written item by item through stream blocks is the text of the whole
// tree, byte for byte; a closed stream block takes nothing more.
TEST(Block, StreamedBlocksWriteTheTextOfTheWholeTree)
{
    std::mt19937 random(20261124);
    for (int round = 0; round < 100; ++round)
    {
        CBlockPtr tree = RandomTree(random);
        CString_ostream out;
        out.SetPrecision(10);
        bool nestedAsStream = (round % 2) == 0;
        {
            CBlock_stream root(out, tree->Name());
            StreamChildren(root, *tree, nestedAsStream);
        }
        EXPECT_EQ(out.str(), Text(*tree)) << round;
    }

    CString_ostream out;
    CBlock_stream root(out, L"Root");
    root << CBlock_named_value(L"Id", CBlock_value(7));
    {
        CBlock_stream empty(root, L"Empty");
    }
    root.Close();
    root << CBlock_named_value(L"Late", CBlock_value(8));
    root.Close();
    EXPECT_EQ(out.str(), "$begin 'Root'\n\tId=7\n\t$begin 'Empty'\n\t$end 'Empty'\n$end 'Root'\n");
}

// Inside a sharing scope equal names and texts are one item; the tree reads
// and writes as it would without, and outlives the scope.
TEST(Block, SharedTextsChangeNothingButTheirCount)
{
    std::vector<std::string> plain;
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round)
        plain.push_back(Text(*RandomTree(random)));
    std::vector<CBlockPtr> kept;
    {
        CBlock_text_sharing sharing;
        random.seed(7);
        for (int round = 0; round < 50; ++round)
            kept.push_back(RandomTree(random));
        // Six names and their texts with the prefix, at most.
        EXPECT_LE(sharing.size(), 12u);
        EXPECT_GE(sharing.size(), 6u);
    }
    for (int round = 0; round < 50; ++round)
        EXPECT_EQ(Text(*kept[round]), plain[round]) << round;

    // The same text is one item in a scope, two outside; scopes nest.
    auto pair = [](CBlock_func& a, CBlock_func& b)
    {
        a << AString(L"Top_1");
        b << AString(L"Top_1");
        return std::make_pair(&a.Name() == &b.Name(), a.GetArgumentItem(0) == b.GetArgumentItem(0));
    };
    CBlock_func a1(L"Via"), b1(L"Via");
    EXPECT_EQ(pair(a1, b1), std::make_pair(false, false));
    CBlock_text_sharing outer;
    CBlock_func a2(L"Via"), b2(L"Via");
    EXPECT_EQ(pair(a2, b2), std::make_pair(true, true));
    {
        CBlock_text_sharing inner;
        CBlock_func a3(L"Via");
        EXPECT_NE(&a3.Name(), &a2.Name());
        EXPECT_EQ(inner.size(), 1u);
    }
    CBlock_func a4(L"Via");
    EXPECT_EQ(&a4.Name(), &a2.Name());
    EXPECT_EQ(outer.size(), 2u);
}

// Arguments past any small count, copies and assignments of such a function.
TEST(Block, FunctionsOfManyArgumentsCopyWhole)
{
    CBlock_text_sharing sharing;
    CBlock_func polygon(L"Polygon");
    std::string expected = "Polygon(";
    for (int i = 0; i < 100; ++i)
    {
        CBlock_func vertex(L"vertex");
        vertex << i << 0.5 * i;
        if (i % 3 == 0)
            vertex << AString(L"Round") << (i % 2 == 0);
        polygon << vertex;
        expected += (i ? ", vertex(" : "vertex(") + std::to_string(i) + ", " +
                    (i % 2 ? std::to_string(i / 2) + ".5" : std::to_string(i / 2)) +
                    (i % 3 == 0 ? std::string(", 'Round', ") + (i % 2 == 0 ? "true" : "false") : "") + ")";
    }
    expected += ")";
    CBlock root(L"R");
    root << polygon;
    CBlock_func assigned(L"Other");
    assigned << 1 << AString(L"text");
    assigned = polygon;
    root << assigned;
    EXPECT_EQ(polygon.GetArgumentCount(), 100u);
    EXPECT_EQ(assigned.GetArgumentCount(), 100u);
    EXPECT_EQ(Text(root), "$begin 'R'\n\t" + expected + "\n\t" + expected + "\n$end 'R'\n");
    double y = 0;
    auto* last = static_cast<CBlock_func*>(assigned.GetArgumentItem(99));
    ASSERT_NE(last, nullptr);
    int x = 0;
    *last >> x >> y;
    EXPECT_EQ(x, 99);
    EXPECT_EQ(y, 49.5);
}

// A function nested by move, or named by a shared item, writes what a copy
// named by its text writes; the moved-from function is left empty and usable.
TEST(Block, MovedAndSharedNameFunctionsWriteAsCopies)
{
    const CBlock_ptr<CBlock_value> vertexName(new CBlock_value(AString(L"vertex")));
    CBlock_func copied(L"Path"), moved(L"Path");
    std::mt19937 random(3);
    std::uniform_int_distribution<int> count(0, 12);
    for (int i = 0; i < 40; ++i)
    {
        CBlock_func a(L"vertex");
        CBlock_func b(vertexName);
        const int n = count(random);
        for (int k = 0; k < n; ++k)
        {
            a << k * 0.25;
            b << k * 0.25;
            if (k % 5 == 4)
            {
                a << CBlock_func(L"Arc");
                b << CBlock_func(L"Arc");
            }
        }
        copied << a;
        moved << std::move(b);
        EXPECT_EQ(b.GetArgumentCount(), 0u);
        EXPECT_TRUE(b.Name().empty());
        b << 1; // a moved-from function takes arguments again
        EXPECT_EQ(b.GetArgumentCount(), 1u);
    }
    auto* first = static_cast<CBlock_func*>(moved.GetArgumentItem(0));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(&first->Name(), &vertexName->Text());
    CBlock root(L"R");
    root << copied << moved;
    const std::string text = Text(root);
    const size_t line = text.find('\n') + 1;
    const size_t second = text.find('\n', line) + 1;
    EXPECT_EQ(text.substr(line, second - line), text.substr(second, text.find('\n', second) + 1 - second));
    EXPECT_NE(text.find("vertex(0, 0.25, 0.5, 0.75, 1, Arc()"), std::string::npos) << text;
}

TEST(Block, NamesOfSeveralLinesComeBackWhole)
{
    // A block name that holds line ends, a NUL and text that looks like a
    // block header: the closing line must pass over the whole quoted name.
    CBlockPtr root(L"Root");
    std::string odd("Shap\x01");
    odd.push_back('\0');
    odd += "\n\t\tD 0,\n\t\t$begin ";
    CBlockPtr inner(AString(odd.data(), odd.size()));
    CBlockFuncPtr seg(L"Seg");
    *seg << 10 << 10;
    *inner << seg;
    *root << inner;
    const std::string text = Text(*root);
    CBlockPtr back = ReadBack(text, L"Root");
    ASSERT_EQ(back->size(), 1u);
    EXPECT_EQ(back->Item(back->begin())->Name(), AString(odd.data(), odd.size()));
    EXPECT_EQ(Text(*back), text);
}
