// main.cpp - ExpeditionCheck <job-directory>: runs the translator's own readers
// and writers on an Expedition job and reports what the neutral file will
// lose.
//
// The writers build the whole tree as the translator does, onto a stream that
// only counts its bytes: nothing is written into the job directory or
// anywhere else, and the report goes to standard output. With --strict the exit status is 1 when anything was
// lost, for a design-release check; it is 2 for a wrong command line.
#include "tools/ExpeditionCheck/ExpeditionCheckReport.h"

#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace
{
const char* const k_Usage = "Usage: ExpeditionCheck [--json] [--strict] <job-directory>\n"
                            "\n"
                            "Reads and writes the Expedition job as ExpeditionToTnf does, without writing a\n"
                            "file, and reports per file the lines read and skipped, every place where data\n"
                            "is lost (file:line), and what the job holds against what reaches the neutral\n"
                            "file, per conductive layer.\n"
                            "\n"
                            "  --json     the report as one JSON document\n"
                            "  --strict   exit status 1 when anything was lost\n"
                            "  --help     this text\n"
                            "  --version  the program's version\n";

// The neutral file's text goes nowhere; its size is kept.
class CountingStream : public io::CAbstract_ostream
{
public:
    size_t Bytes()
    {
        FlushBuffer();
        return m_Bytes;
    }

protected:
    void Sink(const char* /*data*/, size_t size) override { m_Bytes += size; }

private:
    size_t m_Bytes = 0;
};
} // namespace

int main(int argc, char* argv[])
{
    bool json = false, strict = false;
    std::string job;
    for (int i = 1; i < argc; ++i)
    {
        const std::string argument = argv[i];
        if (argument == "--help" || argument == "-h")
        {
            std::cout << k_Usage;
            return 0;
        }
        if (argument == "--version")
        {
            std::cout << "ExpeditionCheck " << EXPEDITION_CHECK_VERSION << "\n";
            return 0;
        }
        if (argument == "--json")
            json = true;
        else if (argument == "--strict")
            strict = true;
        else if (!argument.empty() && argument[0] == '-')
        {
            std::cout << "Unknown option " << argument << "\n\n" << k_Usage;
            return 2;
        }
        else if (job.empty())
            job = argument;
        else
        {
            std::cout << "One job directory only.\n\n" << k_Usage;
            return 2;
        }
    }
    std::error_code error;
    if (job.empty() || !std::filesystem::is_directory(job, error))
    {
        std::cout << (job.empty() ? std::string("No job directory given.") : job + " is no directory.")
                  << "\n\n"
                  << k_Usage;
        return 2;
    }

    ExpeditionDiagnostics diagnostics;
    ExpeditionParser::SetFileErrorHandler(&ExpeditionParser::ThrowFileError);
    ExpeditionCheckRun run;
    run.m_Job = job;
    // The translator and its model are left to the system at the end.
    auto* translator = new ExpeditionToTnf;
    {
        const ExpeditionDiagnostics::AssertListener listening(diagnostics);
        try
        {
            translator->ReadJob(AString(job.c_str()), &diagnostics);
            CountingStream text;
            translator->WriteNeutralFile(text, ExpeditionToTnf::MakeDateText());
            run.m_Written = true;
            run.m_Bytes = text.Bytes();
        }
        catch (const ExpeditionFileError& stop)
        {
            diagnostics.Report("", 0, "run-ended",
                               "The translator ends here with \"File I/O Error\": " +
                                   stop.GetText().AsAnsi().str() + "; it writes no neutral file.");
        }
    }
    diagnostics.Finish();
    if (json)
        WriteJsonReport_G(std::cout, run, diagnostics);
    else
        WriteTextReport_G(std::cout, run, diagnostics);
    std::cout.flush();
    // The model of a large job holds millions of small objects; the system
    // takes them back faster than freeing them one by one would.
    std::fflush(nullptr);
    std::_Exit(strict && diagnostics.LossCount() > 0 ? 1 : 0);
}
