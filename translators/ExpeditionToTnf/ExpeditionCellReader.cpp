// ExpeditionCellReader.cpp - Cell.hkp: the footprints of the job.
//
// One footprint per cell, whatever the cell keyword. Package group, mount
// type and number of layers are not cleared between cells, so a cell that
// does not state one inherits it from the cell before. Pin names are made
// unique within a cell, because placed components refer to pins by name.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"
#include "translators/ExpeditionToTnf/ExpeditionUniqueNames.h"

#include <algorithm>
#include <string_view>

namespace
{
bool IsCellKeyword(const AString& token)
{
    return IsKeyword_G(token, L"DRAWING_CELL") || IsKeyword_G(token, L"PACKAGE_CELL") ||
           IsKeyword_G(token, L"REUSABLE_CIRCUIT_CELL") || IsKeyword_G(token, L"MECHANICAL_CELL");
}

bool IsGraphicKeyword(const AString& token)
{
    return IsKeyword_G(token, L"PLACEMENT_OUTLINE") || IsKeyword_G(token, L"ASSEMBLY_OUTLINE") ||
           IsKeyword_G(token, L"SILKSCREEN_OUTLINE") || IsKeyword_G(token, L"SOLDER_MASK") ||
           IsKeyword_G(token, L"SOLDER_PASTE") || IsKeyword_G(token, L"GRAPHIC");
}

} // namespace

void ExpeditionParser::ReadCells(ElementList& elements)
{
    LongFileName file;
    // The lower-case spelling of this one file is written out as it stands.
    OpenJobFile(AString(L"Cell.hkp"), AString(L"cell.hkp"), true, file);
    io::CToken_istream stream(file, 0);
    ReadCells(stream, elements);
}

void ExpeditionParser::ReadCells(io::CToken_istream& stream, ElementList& elements)
{
    const ExpeditionDiagnostics::FileScope reading(m_Diagnostics, stream);
    double factor = 1.0;
    bool databaseUnits = false;
    AString token; // empty at the start, so the first line is skipped
    ExpeditionReaderCursor at{stream, token, factor};
    while (!at.AtEnd())
    {
        if (IsCellKeyword(token))
        {
            // The cell leaves the next keyword current; the level stays that
            // of the cell keyword.
            ReadCellRecord(at, elements);
            continue;
        }
        if (at.Is(L"UNITS") && at.m_Level == k_OneDot && !databaseUnits)
        {
            AString text;
            stream.NewLine(text);
            factor = UnitFactor(text);
        }
        else if (at.Is(L"OUTPUT_IN_DB_UNITS") && at.m_Level == k_OneDot)
        {
            AString text;
            stream.NewLine(text);
            databaseUnits = true;
            factor = UnitFactor(text);
        }
        else if (at.AtEnd())
            break;
        else
        {
            if (m_Diagnostics)
                m_Diagnostics->SkippedLine(stream, token);
            stream.NewLine();
        }
        at.Next();
    }
}

void ExpeditionParser::ReadCellRecord(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    AString name;
    stream >> name;
    std::vector<ExpeditionPin*> pins;
    ExpeditionUniqueNames pinNames;
    std::vector<ExpeditionShapes*> shapes;
    std::vector<ExpeditionText*> texts;
    std::vector<ExpeditionAttribute> attributes; // one-line texts of a cell are dropped
    std::vector<ExpeditionVia*> vias;
    std::vector<ExpeditionTrace*> traces;

    at.Next();
    while (!at.AtEnd())
    {
        if (IsKeyword_G(token, L"DIMENSION_SETTINGS"))
        {
            const size_t from = stream.Position();
            SkipDimensionSettings(stream);
            if (m_Diagnostics)
                ReportSwallowedLines(*m_Diagnostics, stream, from);
            at.Next();
        }
        else if (IsKeyword_G(token, L"PACKAGE_GROUP"))
        {
            stream >> m_CellPackageGroup;
            at.Next();
        }
        else if (IsKeyword_G(token, L"MOUNT_TYPE"))
        {
            stream >> m_CellMountType;
            at.Next();
        }
        else if (IsKeyword_G(token, L"NUMBER_LAYERS"))
        {
            int number = 0;
            stream >> number;
            m_CellNumberLayers = static_cast<unsigned>(number);
            at.Next();
        }
        else if (IsKeyword_G(token, L"PIN"))
        {
            if (ExpeditionPin* pin = ReadCellPin(at))
            {
                pin->m_Name = pinNames.Take(pin->m_Name);
                pins.push_back(pin);
            }
        }
        else if (IsGraphicKeyword(token))
            ReadGraphic(at, shapes);
        else if (IsKeyword_G(token, L"TEXT"))
            ReadText(at, texts, attributes);
        else if (IsKeyword_G(token, L"TRACE"))
        {
            AString netName;
            traces.push_back(ReadTrace(at, 0, netName));
        }
        else if (IsKeyword_G(token, L"VIA"))
        {
            AString netName;
            vias.push_back(ReadVia(at, netName));
        }
        else if (IsCellKeyword(token) || IsKeyword_G(token, L"UNITS"))
            break; // the end of the cell; the keyword stays current
        else
        {
            stream.NewLine();
            at.Next();
        }
    }

    std::set<AString> padStacks;
    for (const ExpeditionPin* pin : pins)
        padStacks.insert(pin->m_PadStackName);
    elements.push_back(new ExpeditionFootprint(name, m_CellPackageGroup, m_CellMountType, m_CellNumberLayers,
                                               pins, shapes, texts, vias, traces));
    // Keys compare with case: a later cell of the same name replaces the set.
    m_CellPadStacks[name] = padStacks;
}

namespace
{
// The dots in front of a line's keyword; 0 for a line without one.
size_t LeadingDots(std::string_view line)
{
    const size_t first = line.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return 0;
    const size_t end = line.find_first_not_of('.', first);
    return (end == std::string_view::npos ? line.size() : end) - first;
}
} // namespace

// The search behind DIMENSION_SETTINGS ends on the first line with one of the
// dimension words, wherever it stands. Lines it passes over that have no more
// dots than DIMENSION_SETTINGS itself are records of the cell, or of the file,
// and are lost with it.
void ExpeditionParser::ReportSwallowedLines(ExpeditionDiagnostics& diagnostics,
                                            const io::CToken_istream& stream, size_t from)
{
    const std::string_view text = stream.Data();
    const size_t to = stream.Position();
    if (to <= from || from > text.size())
        return;
    const size_t lineStart = text.rfind('\n', from == 0 ? 0 : from - 1);
    const size_t ownDots =
        LeadingDots(text.substr(lineStart == std::string_view::npos ? 0 : lineStart + 1, from));
    size_t swallowed = 0, firstLine = 0;
    std::string firstKeyword;
    // The keyword's own line is the search's start; the lines behind it, up
    // to the one the search ended on, are what it passed over.
    for (size_t start = text.find('\n', from); start != std::string_view::npos && start + 1 < to;)
    {
        ++start;
        const size_t end = std::min(text.find('\n', start), to);
        const std::string_view line = text.substr(start, end - start);
        const size_t dots = LeadingDots(line);
        if (dots > 0 && dots <= ownDots)
        {
            if (swallowed++ == 0)
            {
                firstLine = stream.LineOf(start);
                // A line of dots alone has no keyword.
                const size_t word = std::min(line.find_first_not_of(" \t."), line.size());
                firstKeyword = std::string(line.substr(word, line.find_first_of(" \t\r", word) - word));
            }
        }
        start = end;
    }
    if (swallowed == 0)
        return;
    diagnostics.Report(ExpeditionDiagnostics::FileNameOf(stream), stream.LineOf(from), "section-cut-short",
                       "DIMENSION_SETTINGS passes over " + std::to_string(swallowed) +
                           " records of the cell up to line " + std::to_string(stream.LineOf(to - 1)) +
                           ", from " + firstKeyword + " at line " + std::to_string(firstLine) +
                           " on; they are lost.");
}

// The block behind DIMENSION_SETTINGS has lines that look like keywords. It
// is passed over up to the first line that names one of the dimension words;
// if none comes within 27 lines, nothing of the cell is lost.
void ExpeditionParser::SkipDimensionSettings(io::CToken_istream& stream)
{
    static const wchar_t* const patterns[] = {
        L"*UNITS*",     L"*PRECISION*", L"*POSITIVE_TOLERANCE*", L"*NEGATIVE_TOLERANCE*", L"*LINEWIDTH*",
        L"*LINESTYLE*", L"*UNITS*",     L"*PRECISION*",          L"*EXTENSIONGAP*",       L"*ORIENTATION*"};
    const io::CAbstract_stream_pos start = stream.Tell();
    stream.NewLine();
    AString line;
    for (int looked = 0; looked < 27 && !stream.eof(); ++looked)
    {
        stream.NewLine(line);
        for (const wchar_t* pattern : patterns)
            if (line.Match(pattern))
                return;
    }
    stream.Seek(start);
}
