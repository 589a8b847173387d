// ExpeditionDiagnostics.cpp - the events of a read, the tallies of skipped
// lines, and the catalogue of keywords the neutral file doesn't need.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"

#include "core/lib/vellum/Assert.h"
#include "core/lib/vellum/streamio/TokenStream.h"
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"

#include <algorithm>
#include <cctype>

namespace
{
// Keywords of Expedition's files that carry nothing for an electromagnetic
// analysis: the head of each file, silkscreen, assembly and documentation
// drawings, texts, design rules and manufacturing data. Upper case, sorted.
const char* const k_NotNeeded[] = {
    "!", // a comment line
    "ALLOW_BURIED_RESISTORS",
    "ASSEMBLY_OUTLINE",
    "ATTRIBUTE",
    "BOARD_THICKNESS",
    "CREATOR",
    "DATE",
    "DEFAULT_DIFF_PAIR_RULES",
    "DESCRIPTION",
    "DESIGN_NAME",
    "DIMENSION",
    "DRAWING_CELL",
    "DRC",
    "DRC_SETTINGS",
    "DRILL_DRAWING",
    "FIDUCIAL",
    "FILETYPE",
    "FONT",
    "HEIGHT",
    "HORZ_JUST",
    "INSERTION_OUTLINE",
    "JOB_NAME",
    "JOB_OPTIONS",
    "LAYER_TECHNOLOGY",
    "MOUNTING_HOLE",
    "NOTES",
    "OWNER",
    "PACKAGE_GROUP",
    "PART_NAME",
    "PART_NUMBER",
    "PEN_WIDTH",
    "PID",
    "PLACEMENT_OUTLINE",
    "PLANE_NET_CLEARANCE",
    "REF_DES",
    "SILKSCREEN_OUTLINE",
    "SOLDER_MASK",
    "SOLDER_PASTE",
    "TEXT",
    "TEXT_TYPE",
    "TEXT_OPTIONS",
    "TEXT_VALUE",
    "TIMESTAMP",
    "VERSION",
    "VERT_JUST",
};

std::string Upper(const AString& keyword)
{
    std::string text = keyword.AsAnsi().str();
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}
} // namespace

bool ExpeditionDiagnostics::IsNotNeeded(const AString& keyword)
{
    // The first line of a file, dropped by the readers that begin with an
    // empty keyword, is the file's type.
    if (keyword.empty())
        return true;
    const std::string upper = Upper(keyword);
    for (const char* word : k_NotNeeded)
        if (upper == word)
            return true;
    return false;
}

std::string ExpeditionDiagnostics::FileNameOf(const io::CToken_istream& stream)
{
    const std::string path = stream.GetName().AsAnsi().str();
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void ExpeditionDiagnostics::FileOpened(const io::CToken_istream& stream)
{
    const std::string file = FileNameOf(stream);
    FileTally& tally = m_Files[file];
    tally.m_Read = true;
    if (!stream.IsOpen())
    {
        Report(file, 0, "file-unreadable",
               "The file is there but cannot be read; the job is read as if it were empty.");
        return;
    }
    const std::string_view data = stream.Data();
    // The lines a person sees; a last line without its line end counts too.
    tally.m_Lines = data.empty() ? 0 : stream.LineOf(data.size()) - 1;
    if (!data.empty() && data.back() != '\n' && data.back() != '\r')
        ++tally.m_Lines;
    const bool utf16 = data.size() >= 2 && ((data[0] == '\xff' && data[1] == '\xfe') ||
                                            (data[0] == '\xfe' && data[1] == '\xff') ||
                                            data.find('\0') != std::string_view::npos);
    if (utf16)
        Report(file, 1, "utf16-text",
               "The file is UTF-16 text; its keywords are not seen and nothing of it is read.");
    else if (data.find('\n') == std::string_view::npos && std::count(data.begin(), data.end(), '\r') > 1)
        Report(file, 1, "cr-only-line-ends",
               "The lines end with a carriage return alone; the file reads as one line, and "
               "nothing behind its first keyword is read.");
}

void ExpeditionDiagnostics::FileMissing(const std::string& file, bool required)
{
    m_Files[file];
    Report(file, 0, required ? "missing-required-file" : "missing-file",
           required ? "A required file of the job is not there; the run ends."
                    : "The file is not there; what it would give is left out.");
}

void ExpeditionDiagnostics::SkippedLine(const io::CToken_istream& stream, const AString& keyword)
{
    Skipped& skipped = m_Files[FileNameOf(stream)].m_Skipped[Upper(keyword)];
    if (skipped.m_Count == 0)
        skipped.m_NotNeeded = IsNotNeeded(keyword);
    if (skipped.m_FirstLines.size() < k_FirstLinesKept)
        skipped.m_FirstLines.push_back(stream.TokenLine());
    ++skipped.m_Count;
}

void ExpeditionDiagnostics::AtToken(const io::CToken_istream& stream, const char* kind,
                                    const std::string& text)
{
    Report(FileNameOf(stream), stream.TokenLine(), kind, text);
}

void ExpeditionDiagnostics::AtRecord(const io::CToken_istream& stream, const char* kind,
                                     const std::string& text)
{
    Report(FileNameOf(stream), stream.RecordLine(), kind, text);
}

void ExpeditionDiagnostics::Report(const std::string& file, size_t line, const char* kind,
                                   const std::string& text)
{
    m_Events.push_back(Event{file, line, kind, text});
}

size_t ExpeditionDiagnostics::LossCount() const
{
    size_t count = m_Events.size();
    for (const auto& [file, tally] : m_Files)
        for (const auto& [keyword, skipped] : tally.m_Skipped)
            if (!skipped.m_NotNeeded)
                count += skipped.m_Count;
    return count;
}

ExpeditionDiagnostics::FileScope::FileScope(ExpeditionDiagnostics* diagnostics,
                                            const io::CToken_istream& stream)
    : m_Diagnostics(diagnostics)
{
    if (!m_Diagnostics)
        return;
    m_Diagnostics->FileOpened(stream);
    m_Diagnostics->m_Stream = &stream;
    m_Diagnostics->m_LineHint = 0;
}

ExpeditionDiagnostics::FileScope::~FileScope()
{
    if (!m_Diagnostics)
        return;
    m_Diagnostics->m_Stream = nullptr;
    m_Diagnostics->m_LineHint = 0;
}

void ExpeditionDiagnostics::Where(std::string& file, size_t& line) const
{
    if (m_Stream)
    {
        file = FileNameOf(*m_Stream);
        line = m_LineHint > 0 ? m_LineHint : m_Stream->TokenLine();
        return;
    }
    file.clear();
    line = 0;
}

namespace
{
const char* const k_NameWords[] = {"Pad", "Pad", "Padstack", "Cell", "Part number", "Part number", "Pin"};
static_assert(sizeof k_NameWords / sizeof k_NameWords[0] == ExpeditionDiagnostics::k_NameKinds);

// Where each kind of name is defined, for the sentence of an unresolved one.
const char* const k_DefinedIn[] = {"Padstack.hkp", "Padstack.hkp", "Padstack.hkp", "Cell.hkp",
                                   "PDB.hkp",      "PDB.hkp",      "any component"};

const char* const k_UnresolvedKinds[] = {
    "unresolved-pad",         "unresolved-pad",         "unresolved-padstack", "unresolved-cell",
    "unresolved-part-number", "unresolved-part-number", "unresolved-pin"};

// What the neutral file does without the name.
const char* const k_Consequence[] = {
    "the padstack refers to a pad shape that the file does not define",
    "the padstack refers to a pad shape that the file does not define",
    "the pin or via refers to a padstack that the file does not define",
    "the component refers to a footprint that the file does not define",
    "the component's properties carry no value or type from the part database",
    "the component's properties carry no value or type from the part database",
    "the net lists nothing for it",
};

ExpeditionDiagnostics* g_Listening = nullptr;

void ObserveAssert(const char* file, int line, const char* expression)
{
    if (g_Listening)
        g_Listening->AssertFailed(file, line, expression);
}
} // namespace

void ExpeditionDiagnostics::NameGiven(NameKind kind, const AString& name, const io::CToken_istream& stream,
                                      size_t line)
{
    const auto [it, inserted] = m_Given[kind].try_emplace(Upper(name));
    if (inserted)
        it->second = Origin{FileNameOf(stream), line > 0 ? line : stream.TokenLine()};
}

bool ExpeditionDiagnostics::IsNameGiven(NameKind kind, const AString& name) const
{
    return m_Given[kind].count(Upper(name)) > 0;
}

void ExpeditionDiagnostics::Unresolved(NameKind kind, const AString& name, const std::string& askedBy)
{
    Asked& asked = m_Unresolved[kind][Text(name)];
    if (asked.m_Count++ == 0)
        asked.m_FirstAskedBy = askedBy;
}

void ExpeditionDiagnostics::NullPadShape(const AString& pad, const AString& shapeWord)
{
    const auto origin = m_Given[k_PadDefined].find(Upper(pad));
    const Origin where = origin == m_Given[k_PadDefined].end() ? Origin{"Padstack.hkp", 0} : origin->second;
    Report(where.m_File, where.m_Line, "pad-shape-null",
           "Pad \"" + Text(pad) + "\" comes out without a shape" +
               (shapeWord.empty() ? std::string(" (no shape keyword)") : " (shape " + Text(shapeWord) + ")") +
               ": its entry in PadShapes is empty.");
}

ExpeditionDiagnostics::AssertListener::AssertListener(ExpeditionDiagnostics& diagnostics)
    : m_LoggedBefore(LogFailedAsserts_G)
{
    g_Listening = &diagnostics;
    // A site falls silent after its first failure; with failures logged the
    // later ones are counted too.
    LogFailedAsserts_G = true;
    SetAssertObserver_G(&ObserveAssert);
}

ExpeditionDiagnostics::AssertListener::~AssertListener()
{
    SetAssertObserver_G(nullptr);
    LogFailedAsserts_G = m_LoggedBefore;
    g_Listening = nullptr;
}

void ExpeditionDiagnostics::AssertFailed(const char* file, int line, const char* expression)
{
    const std::string site = std::string(file) + "(" + std::to_string(line) + ")";
    auto [it, inserted] = m_Asserts.try_emplace(site, m_Events.size(), 0);
    ++it->second.second;
    if (!inserted)
        return;
    std::string where;
    size_t whereLine = 0;
    Where(where, whereLine);
    const std::string during = m_Stream  ? std::string(" while reading up to this line")
                               : m_Block ? std::string(" while writing the ") + m_Block + " block"
                                         : std::string();
    Report(where, whereLine, "assertion-failed",
           "A check of the translator failed" + during + ": " + site + ": " + expression +
               "; the run goes on behind it.");
}

void ExpeditionDiagnostics::Finish()
{
    for (const auto& [site, first] : m_Asserts)
        if (first.second > 1 && first.first < m_Events.size())
            m_Events[first.first].m_Text += " It failed " + std::to_string(first.second) + " times in all.";
    m_Asserts.clear();
    for (int kind = 0; kind < k_NameKinds; ++kind)
    {
        // A pad is given by a padstack or defined by its own record; an
        // unresolved one is named where a padstack gave it.
        const NameKind givenAs = kind == k_PadDefined    ? k_PadName
                                 : kind == k_PartDefined ? k_PartNumber
                                                         : NameKind(kind);
        for (const auto& [name, asked] : m_Unresolved[kind])
        {
            const auto origin = m_Given[givenAs].find(Upper(AString(name.c_str())));
            const Origin where = origin == m_Given[givenAs].end() ? Origin{} : origin->second;
            Report(where.m_File, where.m_Line, k_UnresolvedKinds[kind],
                   std::string(k_NameWords[kind]) + " \"" + name + "\" is not in " + k_DefinedIn[kind] +
                       "; asked for by " + asked.m_FirstAskedBy +
                       (asked.m_Count > 1 ? " and " + std::to_string(asked.m_Count - 1) + " more" : "") +
                       ": " + k_Consequence[kind] + ".");
        }
        m_Unresolved[kind].clear();
    }
}

void ExpeditionDiagnostics::ComponentInJob(const std::vector<ExpeditionPin*>& pins)
{
    ++m_InJob.m_Components;
    m_InJob.m_Pins += pins.size();
    for (const ExpeditionPin* pin : pins)
        if (pin && !pin->m_NetName.empty())
            m_InJob.m_NetNames.insert(Upper(pin->m_NetName));
    m_InJob.m_Nets = m_InJob.m_NetNames.size();
}

void ExpeditionDiagnostics::AtPosition(const char* kind, const std::string& text)
{
    std::string file;
    size_t line = 0;
    Where(file, line);
    Report(file, line, kind, text);
}
