// main.cpp - ExpeditionCheck <job-directory>: reads an Expedition job with the
// translator's own readers and reports what the neutral file will lose.
//
// Nothing is written into the job directory; the report goes to standard
// output. With --strict the exit status is 1 when anything was lost, for a
// design-release check; it is 2 for a wrong command line.
#include "tools/ExpeditionCheck/ExpeditionCheckReport.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace
{
const char* const k_Usage =
    "Usage: ExpeditionCheck [--json] [--strict] <job-directory>\n"
    "\n"
    "Reads the Expedition job as ExpeditionToTnf does and reports, per file, the lines\n"
    "read and skipped, every place where data is lost (file:line), and what reaches\n"
    "the neutral file per conductive layer.\n"
    "\n"
    "  --json     the report as one JSON document\n"
    "  --strict   exit status 1 when anything was lost\n"
    "  --help     this text\n"
    "  --version  the program's version\n";
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
    auto* parser = new ExpeditionParser(AString(job.c_str()));
    parser->m_Diagnostics = &diagnostics;
    ElementList elements;
    try
    {
        parser->Read(elements);
    }
    catch (const ExpeditionFileError& stop)
    {
        diagnostics.Report("", 0, "run-ended",
                           "The translator ends here with \"File I/O Error\": " +
                               stop.GetText().AsAnsi().str() + "; it writes no neutral file.");
    }
    const ExpeditionCheckSummary summary = ExpeditionCheckSummary::Of(elements);
    if (json)
        WriteJsonReport_G(std::cout, job, diagnostics, summary);
    else
        WriteTextReport_G(std::cout, job, diagnostics, summary);
    std::cout.flush();
    // The model of a large job holds millions of small objects; the system
    // takes them back faster than freeing them one by one would.
    std::fflush(nullptr);
    std::_Exit(strict && diagnostics.LossCount() > 0 ? 1 : 0);
}
