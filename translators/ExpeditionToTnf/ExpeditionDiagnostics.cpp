// ExpeditionDiagnostics.cpp - the events of a read, the tallies of skipped
// lines, and the catalogue of keywords the neutral file doesn't need.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"

#include "core/lib/vellum/streamio/TokenStream.h"

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
