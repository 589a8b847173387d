// ExpeditionCheck run as a user runs it: the report of a job on standard
// output, --strict's exit status with and without losses, --json, --help,
// --version, and a job directory left exactly as it was.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#ifndef _WIN32
#include <sys/wait.h>

namespace fs = std::filesystem;

namespace
{
struct Result
{
    int m_Status = -1;
    std::string m_Output;
};

Result Check(const std::string& arguments)
{
    Result result;
    const std::string command = std::string("\"") + TNF_CHECK_EXE + "\" " + arguments + " 2>/dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    size_t n = 0;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.m_Output.append(buffer, n);
    const int status = pclose(pipe);
    result.m_Status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

// A copy of the bundled example in a fresh directory; without its test
// point section it loses nothing.
fs::path CopyExample(const std::string& name, bool withTestPoints)
{
    const fs::path job = fs::temp_directory_path() / ("expedition_check_test_" + name);
    fs::remove_all(job);
    fs::create_directories(job);
    for (const auto& entry : fs::directory_iterator(fs::path(TNF_SOURCE_DIR) / "examples" / "Demo4Layer"))
        fs::copy_file(entry.path(), job / entry.path().filename());
    if (!withTestPoints)
    {
        std::ifstream in(job / "JobPrefs.hkp", std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        in.close();
        std::string jobPrefs = text.str();
        jobPrefs.erase(jobPrefs.find(".TP_ASSIGNMENT_SECTION"));
        std::ofstream(job / "JobPrefs.hkp", std::ios::binary) << jobPrefs;
    }
    return job;
}

std::string Listing(const fs::path& job)
{
    std::string listing;
    for (const auto& entry : fs::directory_iterator(job))
        listing += entry.path().filename().string() + " " + std::to_string(entry.file_size()) + "\n";
    return listing;
}
} // namespace

TEST(ExpeditionCheck, ReportAndStrictExitStatus)
{
    const fs::path lossy = CopyExample("lossy", true);
    const std::string before = Listing(lossy);
    const Result report = Check("\"" + lossy.string() + "\"");
    EXPECT_EQ(report.m_Status, 0);
    EXPECT_NE(report.m_Output.find("JobPrefs.hkp:95: section-cut-short:"), std::string::npos)
        << report.m_Output;
    EXPECT_NE(report.m_Output.find("Layout.hkp: 842 lines read"), std::string::npos) << report.m_Output;
    EXPECT_NE(report.m_Output.find("components 12 -> 12, pins 43 -> 43, nets 7 -> 7, vias 15 -> 15"),
              std::string::npos)
        << report.m_Output;
    // The writers ran: the size of the file the translator writes.
    EXPECT_NE(report.m_Output.find("the file would be 27889 bytes"), std::string::npos) << report.m_Output;
    EXPECT_EQ(Check("--strict \"" + lossy.string() + "\"").m_Status, 1);
    EXPECT_EQ(Listing(lossy), before); // nothing written into the job

    const fs::path clean = CopyExample("clean", false);
    const Result strict = Check("--strict \"" + clean.string() + "\"");
    EXPECT_EQ(strict.m_Status, 0) << strict.m_Output;
    EXPECT_NE(strict.m_Output.find("Nothing lost"), std::string::npos) << strict.m_Output;

    // A job the translator cannot read at all is a loss too.
    fs::remove(clean / "Cell.hkp");
    const Result broken = Check("--strict \"" + clean.string() + "\"");
    EXPECT_EQ(broken.m_Status, 1);
    EXPECT_NE(broken.m_Output.find("run-ended"), std::string::npos) << broken.m_Output;
    EXPECT_NE(broken.m_Output.find("cell.hkp not found"), std::string::npos) << broken.m_Output;
    fs::remove_all(lossy);
    fs::remove_all(clean);
}

TEST(ExpeditionCheck, JsonHelpVersionAndWrongCommandLines)
{
    const fs::path job = CopyExample("json", true);
    const Result json = Check("--json \"" + job.string() + "\"");
    EXPECT_EQ(json.m_Status, 0);
    ASSERT_FALSE(json.m_Output.empty());
    EXPECT_EQ(json.m_Output.front(), '{');
    EXPECT_NE(
        json.m_Output.find("{\"file\": \"JobPrefs.hkp\", \"line\": 95, \"kind\": \"section-cut-short\""),
        std::string::npos)
        << json.m_Output;
    EXPECT_NE(json.m_Output.find("\"losses\": "), std::string::npos);
    fs::remove_all(job);

    const Result help = Check("--help");
    EXPECT_EQ(help.m_Status, 0);
    EXPECT_NE(help.m_Output.find("--strict"), std::string::npos);
    const Result version = Check("--version");
    EXPECT_EQ(version.m_Status, 0);
    EXPECT_EQ(version.m_Output, std::string("ExpeditionCheck ") + TNF_PROJECT_VERSION + "\n");
    EXPECT_EQ(Check("").m_Status, 2);
    EXPECT_EQ(Check("--no-such-option /tmp").m_Status, 2);
    EXPECT_EQ(Check("/nonexistent-job-directory").m_Status, 2);
}
#endif
