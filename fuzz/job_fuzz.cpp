// job_fuzz.cpp - a whole job, from the reading of its files to the neutral
// file written, on one byte string split into the files of a job.
//
// The framing: the input is cut at each line "@@@@"; the pieces in turn are
// JobPrefs.hkp, Padstack.hkp, Cell.hkp, Layout.hkp, PDB.hkp, NetClass.hkp and
// Planes.hkp. A required file without a piece is written empty; an optional
// one is left out. The job lives in a folder of its own, and the translation
// runs through the program's own entry, Translate, with the file-error ending
// turned into an exception. The neutral file it writes must be complete: it
// ends with the line "$end 'TarvexNeutralFile'".
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include <sanitizer/lsan_interface.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;

namespace
{
const char* const k_Files[] = {"JobPrefs.hkp", "Padstack.hkp", "Cell.hkp",  "Layout.hkp",
                               "PDB.hkp",      "NetClass.hkp", "Planes.hkp"};
constexpr size_t k_Required = 5;
fs::path g_Folder;

std::vector<std::string_view> Split(std::string_view text)
{
    std::vector<std::string_view> pieces;
    const std::string_view marker = "\n@@@@\n";
    while (pieces.size() + 1 < std::size(k_Files))
    {
        const size_t at = text.find(marker);
        if (at == std::string_view::npos)
            break;
        pieces.push_back(text.substr(0, at));
        text.remove_prefix(at + marker.size());
    }
    pieces.push_back(text);
    return pieces;
}

// One translation; false if a reader ended the run.
bool TranslateOnce(const fs::path& job, const fs::path& output)
{
    fs::remove(output);
    ExpeditionToTnf translator;
    try
    {
        translator.Translate(AString(job.string().c_str()), AString(output.string().c_str()), false);
    }
    catch (const ExpeditionFileError&)
    {
        return false;
    }
    return true;
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    ExpeditionParser::SetFileErrorHandler(&ExpeditionParser::ThrowFileError);
    g_Folder =
        fs::temp_directory_path() / ("tnf_job_fuzz_" + std::to_string(std::rand()) + "_" +
                                     std::to_string(reinterpret_cast<uintptr_t>(&g_Folder) & 0xFFFFFF));
    fs::create_directories(g_Folder / "job");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fs::path job = g_Folder / "job";
    const std::vector<std::string_view> pieces =
        Split(std::string_view(reinterpret_cast<const char*>(data), size));
    for (size_t i = 0; i < std::size(k_Files); ++i)
    {
        const fs::path file = job / k_Files[i];
        if (i < pieces.size() || i < k_Required)
        {
            std::ofstream out(file, std::ios::binary | std::ios::trunc);
            if (i < pieces.size())
                out.write(pieces[i].data(), static_cast<std::streamsize>(pieces[i].size()));
        }
        else
            fs::remove(file);
    }
    const fs::path output = g_Folder / "out.tnf";
    fs::remove(output);
    // A run that a reader ends leaves what it held to the end of the
    // process; the exception that stands in for that end here leaks it. So
    // the job is translated with leak checking off first, and again with it
    // on when the run went through.
    bool ended = false;
    {
        __lsan::ScopedDisabler noLeakChecks;
        ended = !TranslateOnce(job, output);
    }
    if (!ended)
        TranslateOnce(job, output);
    // Nothing but the job folder and a finished output may be left.
    for (const auto& entry : fs::directory_iterator(g_Folder))
        if (entry.path().filename() != "job" && entry.path() != output)
        {
            std::fprintf(stderr, "left behind: %s\n", entry.path().string().c_str());
            std::abort();
        }
    if (!ended)
    {
        const std::string end = "$end 'TarvexNeutralFile'\n";
        std::ifstream in(output, std::ios::binary | std::ios::ate);
        const std::streamoff bytes = in.tellg();
        std::string tail(end.size(), '\0');
        if (bytes >= static_cast<std::streamoff>(end.size()))
        {
            in.seekg(bytes - static_cast<std::streamoff>(end.size()));
            in.read(tail.data(), static_cast<std::streamsize>(end.size()));
        }
        if (tail != end)
        {
            std::fprintf(stderr, "the output is missing or not complete\n");
            std::abort();
        }
    }
    return 0;
}
