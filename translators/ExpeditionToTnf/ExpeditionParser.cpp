// ExpeditionParser.cpp - the reading order of a job and the finding of its
// files.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include "lib/math/geometry/Arc.h"
#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

#include <cmath>
#include <cstdlib>

ExpeditionParser::ExpeditionParser(const AString& directory) : m_Directory(directory) {}

ExpeditionParser::~ExpeditionParser()
{
    // What the run has not taken over is still the parser's.
    DeleteOwned_G(m_ClearanceRules);
    // The further pads of split custom pads are in no element list.
    for (auto& [name, loops] : m_PadLoops)
        DeleteOwned_G(loops);
    DeleteOwned_G(m_LoosePads);
    delete m_RouteBorder;
    for (auto& [part, values] : m_PartValues)
        delete values;
    delete m_DefaultSmdPadConnection;
    delete m_DefaultThruPadConnection;
    delete m_DefaultViaConnection;
}

namespace
{
ExpeditionParser::FileErrorHandler g_FileErrorHandler = nullptr;
}

void ExpeditionParser::EndWithFileError(const AString& text)
{
    if (g_FileErrorHandler)
        g_FileErrorHandler(text);
    ExpeditionUi::ShowMessage_G(AString(L"File I/O Error"), text);
    std::exit(0);
}

ExpeditionParser::FileErrorHandler ExpeditionParser::SetFileErrorHandler(FileErrorHandler handler)
{
    const FileErrorHandler earlier = g_FileErrorHandler;
    g_FileErrorHandler = handler;
    return earlier;
}

void ExpeditionParser::ThrowFileError(const AString& text)
{
    throw ExpeditionFileError(text);
}

bool ExpeditionParser::OpenJobFile(const AString& name, const AString& lowerName, bool required,
                                   LongFileName& found) const
{
    const LongFileName given(m_Directory + L"/" + name);
    if (given.Exists())
    {
        found = given;
        return true;
    }
    const LongFileName lower(m_Directory + L"/" + (lowerName.empty() ? name.ToLower() : lowerName));
    if (lower.Exists())
    {
        found = lower;
        return true;
    }
    // The text names the second spelling, the last one tried.
    const AString text = lower.GetPath() + L" not found";
    if (required)
        EndWithFileError(text);
    return false;
}

void ExpeditionParser::Read(ElementList& elements)
{
    ReadJobPrefs(elements);
    ReadPadstacks(elements);
    LookForNetProps();
    ReadCells(elements);
    ReadLayout(elements);
    ReadPlanes(m_LayoutUnitFactor);
    CompleteNets();
    ReadNetClasses();
    CleanPlaneShapes(elements);
    ReadPartDatabase();
    CollectUsedPads(elements);
}

namespace
{
// Whether the token is the dot in front of a keyword, compared as it stands.
bool IsLoneDot(const AString& token)
{
    return token.size() == 1 && token[0] == L'.';
}
} // namespace

int ExpeditionParser::NextToken(io::CToken_istream& stream, AString& token)
{
    int level = 0;
    token = L".";
    while (IsLoneDot(token) && !stream.eof())
    {
        stream >> token;
        if (++level > 8)
            EndWithFileError(AString(L"Token read failure! File may be corrupted"));
    }
    if (!token.empty() && token[0] == L'.')
    {
        // The lexer glued the dot to a digit: the keyword is the rest of the line.
        AString rest;
        token.erase(0, 1);
        stream.NewLine(rest);
        const size_t carriageReturn = rest.find(L'\r', 0);
        if (carriageReturn != AString::npos)
            rest.erase(carriageReturn);
        token += rest;
    }
    return level;
}

int ExpeditionParser::NextPlainToken(io::CToken_istream& stream, AString& token)
{
    int reads = 0;
    token = L".";
    while (IsLoneDot(token) && !stream.eof())
    {
        stream >> token;
        ++reads;
    }
    return reads;
}

void ExpeditionParser::ReadXY(io::CToken_istream& stream, double& x, double& y)
{
    AString scratch;
    stream >> scratch;
    if (scratch == L"(")
        stream >> x >> scratch >> y >> scratch;
    else
    {
        // A number glued to its bracket; "nan" or "inf" there is no number.
        const double glued = std::atof(scratch.AsAnsi().c_str());
        x = std::isfinite(glued) ? glued : 0.0;
        stream >> scratch >> y;
    }
}

void ExpeditionParser::ReadCorners(io::CToken_istream& stream, double& x1, double& y1, double& x2, double& y2)
{
    AString scratch;
    stream >> scratch >> x1 >> scratch >> y1 >> scratch >> scratch >> x2 >> scratch >> y2 >> scratch;
}

void ExpeditionParser::ReadCentre(io::CToken_istream& stream, double& x, double& y)
{
    AString scratch;
    stream >> scratch >> x >> scratch >> y >> scratch;
}

double ExpeditionParser::UnitFactor(const AString& text)
{
    const size_t carriageReturn = text.find(L'\r', 0);
    const AString word =
        (carriageReturn != AString::npos && carriageReturn >= 1) ? text.substr(0, carriageReturn) : text;
    if (word.CompareNoCase(L"mm") == 0)
        return 1.0;
    if (word.CompareNoCase(L"th") == 0)
        return 0.0254;
    if (word.CompareNoCase(L"in") == 0)
        return 25.4;
    if (word.CompareNoCase(L"um") == 0)
        return 0.001;
    if (word.CompareNoCase(L"1NM") == 0)
        return 1e-06;
    if (word.CompareNoCase(L"10NM") == 0)
        return 1e-05;
    return 1.0;
}

namespace
{
// The shapes other than traces keep their vertices one by one.
void AppendOwned(std::vector<ExpeditionVertex*>& to, const std::vector<ExpeditionVertex>& vertices)
{
    to.reserve(to.size() + vertices.size());
    for (const ExpeditionVertex& v : vertices)
        to.push_back(new ExpeditionVertex(v));
}
} // namespace

void ExpeditionParser::ReadPolyline(io::CToken_istream& stream, std::vector<ExpeditionVertex*>& vertices,
                                    double factor)
{
    std::vector<ExpeditionVertex> read;
    ReadPolyline(stream, read, factor);
    AppendOwned(vertices, read);
}

void ExpeditionParser::ReadPolyarc(io::CToken_istream& stream, std::vector<ExpeditionVertex*>& vertices,
                                   double factor)
{
    std::vector<ExpeditionVertex> read;
    ReadPolyarc(stream, read, factor);
    AppendOwned(vertices, read);
}

void ExpeditionParser::ReadPolyline(io::CToken_istream& stream, std::vector<ExpeditionVertex>& vertices,
                                    double factor)
{
    AString token;
    while (!stream.eof())
    {
        NextToken(stream, token);
        if (token.CompareNoCase(L"XY") == 0)
            break;
    }
    AString scratch;
    while (!stream.eof())
    {
        stream >> scratch;
        // A lone dot is the first dot of the next keyword, used up here.
        if (scratch == L".")
            break;
        double x = 0.0, y = 0.0;
        stream >> x >> scratch >> y >> scratch;
        vertices.emplace_back(x * factor, y * factor, 0.0);
    }
}

bool ExpeditionParser::ReadXYRTriples(io::CToken_istream& stream, std::vector<XYRTriple>& triples,
                                      double factor)
{
    AString token;
    while (!stream.eof())
    {
        NextToken(stream, token);
        if (token.CompareNoCase(L"XYR") == 0)
            break;
    }
    if (token.CompareNoCase(L"XYR") != 0)
        return false;
    AString scratch;
    while (!stream.eof())
    {
        stream >> scratch;
        // A lone dot is the first dot of the next keyword, used up here.
        if (scratch == L".")
            break;
        XYRTriple t{0.0, 0.0, 0.0};
        stream >> t.x >> scratch >> t.y >> scratch >> t.r >> scratch;
        triples.push_back({t.x * factor, t.y * factor, t.r * factor});
    }
    return true;
}

void ExpeditionParser::ReadPolyarc(io::CToken_istream& stream, std::vector<ExpeditionVertex>& vertices,
                                   double factor)
{
    std::vector<XYRTriple> triples;
    if (!ReadXYRTriples(stream, triples, factor))
        return;
    for (size_t i = 0; i < triples.size();)
    {
        if (i + 1 < triples.size() && triples[i + 1].r != 0.0)
        {
            const XYRTriple& from = triples[i];
            const XYRTriple& centre = triples[i + 1];
            const XYRTriple& to = i + 2 < triples.size() ? triples[i + 2] : triples[0];
            const geom::Arc arc(geom::Segment(geom::Point(from.x, from.y), geom::Point(to.x, to.y)),
                                centre.r > 0.0 ? geom::k_CCW : geom::k_CW, geom::Point(centre.x, centre.y));
            vertices.emplace_back(from.x, from.y, arc.GetHeight().GetValue());
            i += 2; // the centre leaves no vertex
        }
        else
        {
            vertices.emplace_back(triples[i].x, triples[i].y, 0.0);
            i += 1;
        }
    }
}

AString ExpeditionParser::MakeUniqueName(const AString& name, const std::vector<AString>& taken)
{
    const auto isTaken = [&taken](const AString& candidate)
    {
        for (const AString& t : taken)
            if (t.CompareNoCase(candidate) == 0)
                return true;
        return false;
    };
    if (!isTaken(name))
        return name;
    AString candidate;
    for (int i = 1;; ++i)
    {
        candidate.Format(L"%s_%d", name.c_str(), i);
        if (!isTaken(candidate))
            return candidate;
    }
}

ExpeditionPad* ExpeditionParser::FindPad(const AString& name)
{
    return m_PadIndex.Find(
        m_Pads, name, [](ExpeditionPad* pad) { return pad->AsPad(); },
        [](ExpeditionPad* pad) -> const AString& { return pad->m_Name; });
}

ExpeditionPadStack* ExpeditionParser::FindPadStack(const ElementList& elements, const AString& name)
{
    return m_PadStackIndex.Find(
        elements, name, [](ExpeditionBaseElement* e) { return e->AsPadStack(); },
        [](ExpeditionPadStack* p) -> const AString& { return p->m_Name; });
}

ExpeditionFootprint* ExpeditionParser::FindFootprint(const ElementList& elements, const AString& name)
{
    return m_FootprintIndex.Find(
        elements, name, [](ExpeditionBaseElement* e) { return e->AsFootprint(); },
        [](ExpeditionFootprint* f) -> const AString& { return f->m_Name; });
}

ExpeditionLayoutNet* ExpeditionParser::FindNet(const AString& name)
{
    return m_NetIndex.Find(
        m_Nets, name, [](ExpeditionLayoutNet* net) { return net; },
        [](ExpeditionLayoutNet* net) -> const AString& { return net->m_Name; });
}

AString ExpeditionParser::GetTopLayerName()
{
    return m_LayerNames[1];
}

AString ExpeditionParser::GetBottomLayerName()
{
    return m_LayerNames[static_cast<int>(m_LayerNames.size())];
}

AString ExpeditionParser::GetMountLayerName(const AString& word)
{
    return word.CompareNoCase(L"MNT_LYR") == 0 ? GetTopLayerName() : GetBottomLayerName();
}

void ExpeditionParser::LookForNetProps()
{
    // The file is looked for and never read.
    LongFileName found;
    OpenJobFile(AString(L"NetProps.hkp"), AString(), false, found);
    m_HasNetProps = false;
}
