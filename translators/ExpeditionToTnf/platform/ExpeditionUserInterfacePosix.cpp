// ExpeditionUserInterfacePosix.cpp - the user interface on Linux and other
// POSIX systems.
//
// At a terminal the questions are asked there. Started from a desktop without
// a terminal, zenity's dialogs stand in for the Windows ones. With neither,
// the program can only say how it is meant to be called. Messages always go to
// standard error; when zenity asked the questions it shows them too.
#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace ExpeditionUi
{
namespace
{
enum class Channel
{
    k_Unknown,
    k_Terminal,
    k_Zenity,
    k_None,
};

Channel channel = Channel::k_Unknown;

// Runs a program with arguments (no shell) and collects its standard output;
// false if it could not run or ended with a non-zero status.
bool RunProgram(const std::vector<std::string>& arguments, std::string* output)
{
    std::vector<char*> argv;
    for (const auto& a : arguments)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    int pipeEnds[2] = {-1, -1};
    if (output && pipe(pipeEnds) != 0)
        return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output)
    {
        posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
        posix_spawn_file_actions_addclose(&actions, pipeEnds[1]);
    }
    pid_t pid = 0;
    const int spawned = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (output)
    {
        close(pipeEnds[1]);
        if (spawned == 0)
        {
            char buffer[4096];
            ssize_t n = 0;
            while ((n = read(pipeEnds[0], buffer, sizeof buffer)) > 0)
                output->append(buffer, static_cast<size_t>(n));
        }
        close(pipeEnds[0]);
    }
    if (spawned != 0)
        return false;
    int status = 0;
    if (waitpid(pid, &status, 0) < 0)
        return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool HasZenity()
{
    const char* display = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    if ((!display || !*display) && (!wayland || !*wayland))
        return false;
    return RunProgram({"zenity", "--version"}, nullptr);
}

Channel GetChannel()
{
    if (channel == Channel::k_Unknown)
    {
        if (isatty(STDIN_FILENO))
            channel = Channel::k_Terminal;
        else if (HasZenity())
            channel = Channel::k_Zenity;
        else
            channel = Channel::k_None;
    }
    return channel;
}

// One line from the terminal; false at the end of input.
bool AskLine(const std::string& prompt, std::string& answer)
{
    std::fputs(prompt.c_str(), stdout);
    std::fflush(stdout);
    answer.clear();
    int c = 0;
    while ((c = std::fgetc(stdin)) != EOF && c != '\n')
        answer.push_back(static_cast<char>(c));
    if (c == EOF && answer.empty())
        return false;
    while (!answer.empty() && (answer.back() == '\r' || answer.back() == ' '))
        answer.pop_back();
    return true;
}

std::string TrimLineEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text;
}

bool FileExists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}
} // namespace

bool AskForDirectory_G(const AString& title, AString& directory)
{
    const std::string text = title.AsAnsi().str();
    switch (GetChannel())
    {
    case Channel::k_Terminal:
    {
        std::string answer;
        if (!AskLine(text + ": ", answer) || answer.empty())
            return false;
        directory = AString(answer.c_str());
        return true;
    }
    case Channel::k_Zenity:
    {
        std::string answer;
        if (!RunProgram({"zenity", "--file-selection", "--directory", "--title=" + text}, &answer))
            return false;
        answer = TrimLineEnd(answer);
        if (answer.empty())
            return false;
        directory = AString(answer.c_str());
        return true;
    }
    default:
        std::fputs("usage: ExpeditionToTnf <job-directory> <output.tnf>\n", stderr);
        return false;
    }
}

bool AskForSavePath_G(const SaveRequest& request, AString& path)
{
    std::string initial = request.m_InitialDirectory.AsAnsi().str();
    if (!initial.empty() && initial.back() != '/')
        initial += '/';
    const std::string suggestion = initial + request.m_DefaultName.AsAnsi().str();
    std::string chosen;
    switch (GetChannel())
    {
    case Channel::k_Terminal:
        for (;;)
        {
            if (!AskLine(request.m_Title.AsAnsi().str() + " [" + suggestion + "]: ", chosen))
                return false;
            if (chosen.empty())
                chosen = suggestion;
            if (!FileExists(chosen))
                break;
            // The save dialog asks before it lets a file be replaced.
            std::string confirm;
            if (!AskLine(chosen + " already exists. Replace it? [y/N]: ", confirm))
                return false;
            if (!confirm.empty() && (confirm[0] == 'y' || confirm[0] == 'Y'))
                break;
        }
        break;
    case Channel::k_Zenity:
        if (!RunProgram({"zenity", "--file-selection", "--save", "--confirm-overwrite",
                         "--title=" + request.m_Title.AsAnsi().str(), "--filename=" + suggestion,
                         "--file-filter=" + request.m_FilterName.AsAnsi().str() + " | " +
                             request.m_FilterPattern.AsAnsi().str()},
                        &chosen))
            return false;
        chosen = TrimLineEnd(chosen);
        break;
    default:
        return false;
    }
    if (chosen.empty())
        return false;
    // A name without extension gets the default one, as the save dialog does.
    const size_t slash = chosen.rfind('/');
    const size_t dot = chosen.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        chosen += "." + request.m_DefaultExtension.AsAnsi().str();
    path = AString(chosen.c_str());
    return true;
}

void ShowMessage_G(const AString& title, const AString& text)
{
    const std::string t = title.AsAnsi().str();
    const std::string m = text.AsAnsi().str();
    std::fprintf(stderr, "%s: %s\n", t.c_str(), m.c_str());
    std::fflush(stderr);
    if (channel == Channel::k_Zenity)
        RunProgram({"zenity", "--info", "--no-markup", "--title=" + t, "--text=" + m}, nullptr);
}

AString GetTemporaryDirectory_G()
{
    const char* tmp = std::getenv("TMPDIR");
    std::string dir = (tmp && *tmp) ? tmp : "/tmp";
    if (dir.back() != '/')
        dir += '/';
    return AString(dir.c_str());
}
} // namespace ExpeditionUi
