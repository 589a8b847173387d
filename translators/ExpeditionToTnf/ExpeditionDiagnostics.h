// ExpeditionDiagnostics.h - what a run over a job drops or changes, and where.
//
// The translator is silent by design: an unknown keyword costs its line, a
// trace without a net vanishes, a placed cell whose cell is missing is left
// out, a pad that a padstack names and nobody defines is written as a name
// that refers to nothing. A reader or writer that has a sink reports each
// such place as an event: the file, the line, a stable kind for programs and
// a short sentence for people. Lines that are skipped are tallied per file
// and keyword, with their first few lines, since a large job skips millions
// of them; what the job holds and what the file gets are counted. The
// translator runs without a sink: every report is behind a null test, and
// nothing it writes depends on one.
#pragma once

#include "core/lib/vellum/AString.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace io
{
class CToken_istream;
}
struct ExpeditionPin;

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
    // An event where the run is: the open file at its line hint or last
    // token.
    void AtPosition(const char* kind, const std::string& text);

    // The file a reader has open, for the positions of events that come
    // from deeper down (failed assertions); opens the file's tally too. The
    // scope ends when the reader returns. A null sink makes it do nothing.
    class FileScope
    {
    public:
        FileScope(ExpeditionDiagnostics* diagnostics, const io::CToken_istream& stream);
        ~FileScope();
        FileScope(const FileScope&) = delete;
        FileScope& operator=(const FileScope&) = delete;

    private:
        ExpeditionDiagnostics* m_Diagnostics;
    };
    // A reader that has read its file in one go (Planes.hkp) says which line
    // it is working on; 0 goes back to the stream's own position.
    void SetLineHint(size_t line) { m_LineHint = line; }
    // The block a writer is building, for the same purpose; null when the
    // writers are done.
    void Writing(const char* block) { m_Block = block; }

    // Names that one record gives and another resolves. The readers note
    // where each name was first given; the writers report the names they
    // cannot resolve, each name once, with how often and by whom it was asked
    // for.
    enum NameKind
    {
        k_PadName,      // a pad named by a padstack
        k_PadDefined,   // a pad's own record
        k_PadStackName, // a padstack named by a pin or a via
        k_CellName,     // a cell named by a placed component
        k_PartNumber,   // a part number named by a component's PARTNO text
        k_PartDefined,  // a part of the part database
        k_NetPin,       // a pin named by a net of the netlist
        k_NameKinds
    };
    // line 0: the line of the last token read.
    void NameGiven(NameKind kind, const AString& name, const io::CToken_istream& stream, size_t line = 0);
    bool IsNameGiven(NameKind kind, const AString& name) const;
    void Unresolved(NameKind kind, const AString& name, const std::string& askedBy);
    // A pad whose shape comes out as nothing in the neutral file.
    void NullPadShape(const AString& pad, const AString& shapeWord);

    // What the job holds and what reaches the neutral file, counted as the
    // readers meet records and as the writers write items. Layer "" for the
    // counts that have none.
    struct Counts
    {
        size_t m_Components = 0, m_Pins = 0, m_Nets = 0, m_Vias = 0;
        std::set<std::string> m_NetNames;              // in the job: the nets its pins name, in upper case
        size_t m_Footprints = 0, m_PadStacks = 0;      // in the file
        std::map<std::string, size_t> m_Traces;        // by layer
        std::map<std::string, size_t> m_PlaneOutlines; // by layer
        std::map<std::string, size_t> m_PlaneVoids;    // by layer
        std::map<std::string, size_t> m_PlaneContours; // outlines and voids not yet told apart, by layer
    };
    Counts& InJob() { return m_InJob; }
    Counts& InFile() { return m_InFile; }
    const Counts& GetInJob() const { return m_InJob; }
    const Counts& GetInFile() const { return m_InFile; }
    static std::string LayerKey(const AString& layer) { return Text(layer); }
    // A placed component as the job gives it, with its pins and their nets.
    void ComponentInJob(const std::vector<ExpeditionPin*>& pins);

    // Failed assertions go to this sink, as events at the position of the
    // record being read or the block being written, while a listener is
    // in force; each assertion site is reported once, with how often it failed.
    class AssertListener
    {
    public:
        explicit AssertListener(ExpeditionDiagnostics& diagnostics);
        ~AssertListener();
        AssertListener(const AssertListener&) = delete;
        AssertListener& operator=(const AssertListener&) = delete;

    private:
        bool m_LoggedBefore;
    };
    void AssertFailed(const char* file, int line, const char* expression);

    // Turns what was gathered per name and per site into events; called
    // once the writers are done (a run that ended early calls it too).
    void Finish();

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
    // Where the run is: the file being read and its line, or the block being
    // written.
    void Where(std::string& file, size_t& line) const;

    struct Origin
    {
        std::string m_File;
        size_t m_Line = 0;
    };
    struct Asked
    {
        size_t m_Count = 0;
        std::string m_FirstAskedBy;
    };
    std::vector<Event> m_Events;
    std::map<std::string, FileTally> m_Files;
    const io::CToken_istream* m_Stream = nullptr;
    size_t m_LineHint = 0;
    const char* m_Block = nullptr;
    // By kind, the name in upper case: where it was first given.
    std::map<std::string, Origin> m_Given[k_NameKinds];
    // By kind, the name as the writer asked for it.
    std::map<std::string, Asked> m_Unresolved[k_NameKinds];
    // By assertion site: the event of its first failure and the count.
    std::map<std::string, std::pair<size_t, size_t>> m_Asserts;
    Counts m_InJob, m_InFile;
};
