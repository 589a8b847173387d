// main.cpp - TnfView <file.tnf> [output.html]: a neutral file as one page to
// look at in a browser, to see a translated board before a solver runs on it.
//
// The page is built in memory, written to a temporary file beside the target
// and renamed into place, so a failed run leaves no page and no partial file.
#include "tools/TnfView/TnfBoardReader.h"
#include "tools/TnfView/TnfPageWriter.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#ifndef TNF_VERSION
#define TNF_VERSION "unknown"
#endif

namespace
{
const char* const k_Usage =
    "Usage: TnfView <file.tnf> [output.html]\n"
    "Writes the board of a neutral file as one self-contained HTML page: the copper of\n"
    "every conductive layer, pads, vias, planes with their voids and the board outline,\n"
    "with a layer legend, zoom and pan, and the net under the pointer.\n"
    "The page goes to output.html, by default the input's name with .html.\n"
    "  --help     this text\n"
    "  --version  the program's version\n";

int Fail(const std::string& path, const std::string& message)
{
    std::fprintf(stderr, "TnfView: %s: %s\n", path.c_str(), message.c_str());
    return 1;
}

bool WriteWhole(const std::filesystem::path& target, const std::string& text, std::string& error)
{
    std::filesystem::path temporary = target;
    temporary += ".tnfview-part";
    std::FILE* f = std::fopen(temporary.string().c_str(), "wb");
    if (!f)
    {
        error = "cannot be written";
        return false;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    const bool closed = std::fclose(f) == 0;
    std::error_code ec;
    if (written && closed)
        std::filesystem::rename(temporary, target, ec);
    if (!written || !closed || ec)
    {
        std::filesystem::remove(temporary, ec);
        error = "cannot be written";
        return false;
    }
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0)
    {
        std::fputs(k_Usage, stdout);
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0)
    {
        std::printf("TnfView %s\n", TNF_VERSION);
        return 0;
    }
    if (argc < 2 || argc > 3 || argv[1][0] == '-' || (argc == 3 && argv[2][0] == '-'))
    {
        std::fputs(k_Usage, stderr);
        return 1;
    }
    const std::string input = argv[1];
    std::filesystem::path output = argc == 3 ? std::filesystem::path(argv[2]) : std::filesystem::path(input);
    if (argc == 2)
        output.replace_extension(".html");

    tnfview::TnfBoard board;
    std::string error;
    if (!tnfview::ReadTnfBoard_G(input, board, error))
        return Fail(input, error);
    const std::string page = tnfview::WriteTnfPage_G(board, std::filesystem::path(input).filename().string());
    if (!WriteWhole(output, page, error))
        return Fail(output.string(), error);
    return 0;
}
