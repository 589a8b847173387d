// ExpeditionDiagnostics.h - what a read of a job drops or changes, and where.
//
// The translator is silent by design: an unknown keyword costs its line, a
// trace without a net vanishes, a placed cell whose cell is missing is left
// out. A reader that has a sink reports each such place as an event: the
// file, the line, a stable kind for programs and a short sentence for people.
// Lines that are skipped are tallied per file and keyword, with their first
// few lines, since a large job skips millions of them. The translator runs
// without a sink: every report is behind a null test, and nothing it writes
// depends on one.
#pragma once

#include "core/lib/vellum/AString.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace io
{
class CToken_istream;
}

class ExpeditionDiagnostics
{
public:
    // One place where data was dropped or changed.
    struct Event
    {
        std::string m_File; // the file's name within the job
        size_t m_Line = 0;  // 1-based; 0 for a file as a whole
        std::string m_Kind; // stable, machine-readable: "missing-cell", ...
        std::string m_Text; // one sentence in the words of the board
    };
    // The lines of one keyword that a reader passed over.
    struct Skipped
    {
        size_t m_Count = 0;
        std::vector<size_t> m_FirstLines;
        bool m_NotNeeded = false; // a keyword of the catalogue below
    };
    // What one file gave.
    struct FileTally
    {
        size_t m_Lines = 0;
        bool m_Read = false;
        std::map<std::string, Skipped> m_Skipped; // by keyword in upper case
    };

    // How many first lines of a skipped keyword are kept.
    static constexpr size_t k_FirstLinesKept = 3;

    // A file a reader has opened: its lines are counted, and a file that
    // cannot be read, that ends its lines with a carriage return alone or
    // that is UTF-16 text is reported, since each of them reads as nothing.
    void FileOpened(const io::CToken_istream& stream);
    // A file of the job that is not there; required files end the run.
    void FileMissing(const std::string& file, bool required);

    // A line the reader skipped for its keyword (the last token read).
    void SkippedLine(const io::CToken_istream& stream, const AString& keyword);
    // An event at the last token read, or at the start of the record.
    void AtToken(const io::CToken_istream& stream, const char* kind, const std::string& text);
    void AtRecord(const io::CToken_istream& stream, const char* kind, const std::string& text);
    void Report(const std::string& file, size_t line, const char* kind, const std::string& text);

    // Keywords that Expedition writes and that the neutral file has no place
    // for: silkscreen, assembly, text, design rules and the file's own head.
    static bool IsNotNeeded(const AString& keyword);

    const std::vector<Event>& GetEvents() const { return m_Events; }
    const std::map<std::string, FileTally>& GetFiles() const { return m_Files; }
    // Events, and skipped lines of unknown keywords: data that was lost.
    size_t LossCount() const;

    // The short name of a stream's file: what follows its last separator.
    static std::string FileNameOf(const io::CToken_istream& stream);
    // Narrowed text of a name, for the sentences.
    static std::string Text(const AString& text) { return text.AsAnsi().str(); }

private:
    std::vector<Event> m_Events;
    std::map<std::string, FileTally> m_Files;
};
