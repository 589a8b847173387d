// JobFixture.h - a job directory made by a test, the translator run on it as a
// user would run it, and the output file read back as a block tree.
#pragma once

#include "core/lib/vellum/streamio/Block.h"
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#endif

namespace fs = std::filesystem;

#ifdef _WIN32
// Runs a command line with standard input from NUL and standard error into a
// file. The dialogs and message boxes the program opens meanwhile are read
// ("Title: text" for a box, the dialog's title and static texts for others)
// and answered: OK for a box, Cancel for a dialog, so that a run never waits
// for a person. Under wine that needs a window driver (the null driver will
// do); without one the program's windows cannot open and nothing is seen.
class WindowsRun
{
public:
    static int Run(const std::string& commandLine, const fs::path& errors, std::vector<std::string>& dialogs)
    {
        SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
        HANDLE input = CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                                   OPEN_EXISTING, 0, nullptr);
        HANDLE error = CreateFileW(errors.wstring().c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit,
                                   CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input;
        startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
        startup.hStdError = error;
        PROCESS_INFORMATION process = {};
        std::string line = commandLine;
        const BOOL started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                            &startup, &process);
        CloseHandle(input);
        CloseHandle(error);
        if (!started)
            return -1;
        Watch watch{process.dwProcessId, &dialogs, {}};
        // A minute is far more than any run here takes; a run that takes
        // longer hangs, and is ended.
        DWORD waited = WAIT_TIMEOUT;
        for (int i = 0; i < 1200 && waited == WAIT_TIMEOUT; ++i)
        {
            waited = WaitForSingleObject(process.hProcess, 50);
            EnumWindows(&WindowsRun::Answer, reinterpret_cast<LPARAM>(&watch));
        }
        DWORD status = 0;
        if (waited != WAIT_OBJECT_0)
        {
            TerminateProcess(process.hProcess, 1);
            WaitForSingleObject(process.hProcess, INFINITE);
            dialogs.push_back("(hung)");
        }
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return waited == WAIT_OBJECT_0 ? static_cast<int>(status) : -1;
    }

    // Whether this process can open windows at all: under wine without a
    // display or the null window driver it cannot, and neither can the
    // program, whose boxes then return at once unseen.
    static bool CanOpenWindows()
    {
        HWND probe = CreateWindowA("Static", "", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
        if (!probe)
            return false;
        DestroyWindow(probe);
        return true;
    }

private:
    struct Watch
    {
        DWORD m_ProcessId;
        std::vector<std::string>* m_Dialogs;
        std::vector<HWND> m_Answered;
    };

    static std::string WindowText(HWND window)
    {
        char text[1024] = {};
        GetWindowTextA(window, text, sizeof text);
        return text;
    }

    static BOOL CALLBACK CollectStatic(HWND child, LPARAM texts)
    {
        char className[64] = {};
        GetClassNameA(child, className, sizeof className);
        const std::string text = WindowText(child);
        if (std::string(className) == "Static" && !text.empty())
            reinterpret_cast<std::vector<std::string>*>(texts)->push_back(text);
        return TRUE;
    }

    static BOOL CALLBACK Answer(HWND window, LPARAM context)
    {
        auto& watch = *reinterpret_cast<Watch*>(context);
        DWORD processId = 0;
        GetWindowThreadProcessId(window, &processId);
        char className[64] = {};
        GetClassNameA(window, className, sizeof className);
        // Dialogs only, and only once they are up with their texts.
        if (processId != watch.m_ProcessId || std::string(className) != "#32770" ||
            !IsWindowVisible(window) ||
            std::find(watch.m_Answered.begin(), watch.m_Answered.end(), window) != watch.m_Answered.end())
            return TRUE;
        watch.m_Answered.push_back(window);
        // A message box keeps its text in the static control 0xFFFF.
        if (HWND message = GetDlgItem(window, 0xFFFF))
        {
            watch.m_Dialogs->push_back(WindowText(window) + ": " + WindowText(message));
            PostMessageA(window, WM_COMMAND, IDOK, 0);
            return TRUE;
        }
        std::vector<std::string> texts;
        EnumChildWindows(window, &WindowsRun::CollectStatic, reinterpret_cast<LPARAM>(&texts));
        std::string seen = WindowText(window);
        for (const auto& text : texts)
            seen += " | " + text;
        watch.m_Dialogs->push_back(seen);
        PostMessageA(window, WM_COMMAND, IDCANCEL, 0);
        return TRUE;
    }
};
#endif

// The bytes of a file, as they are on disk.
inline std::string ReadFileBytes(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// The 1-based line of the first line that holds the text, counted here
// independently of the token stream; 0 (and a failure) when it is absent.
inline size_t LineHolding(const std::string& text, const std::string& what)
{
    const size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    if (at == std::string::npos)
        return 0;
    return 1 + static_cast<size_t>(std::count(text.begin(), text.begin() + static_cast<long>(at), '\n'));
}

#ifdef _WIN32
inline const char* const k_NullDevice = "NUL";
#else
inline const char* const k_NullDevice = "/dev/null";
#endif

// Runs the job generator of the benchmarks into dir; the status of the run
// (not 0 where python3 is missing, as under wine).
inline int GenerateJob(const fs::path& dir, const std::string& options)
{
    const std::string command = std::string("python3 \"") + TNF_SOURCE_DIR + "/bench/generate_job.py\" \"" +
                                dir.string() + "\" " + options + " >" + k_NullDevice;
    return std::system(command.c_str());
}

// The five files every job must have, empty but present.
inline const std::map<std::string, std::string>& MinimalJobFiles()
{
    static const std::map<std::string, std::string> files{
        {"JobPrefs.hkp", ".FILETYPE JOB_PREFS\n"}, {"Padstack.hkp", ".FILETYPE PADSTACK_LIBRARY\n"},
        {"Cell.hkp", ".FILETYPE CELL_LIBRARY\n"},  {"Layout.hkp", ".FILETYPE LAYOUT\n"},
        {"PDB.hkp", ".FILETYPE PARTS_DB\n"},
    };
    return files;
}

class JobFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        m_Dir = fs::temp_directory_path() /
                (std::string("tnf_job_") + info->test_suite_name() + "_" + info->name());
        fs::remove_all(m_Dir);
        fs::create_directories(m_Dir / "job");
    }
    void TearDown() override
    {
        if (!HasFailure())
            fs::remove_all(m_Dir);
    }

    fs::path JobDir() const { return m_Dir / "job"; }

    void WriteFile(const std::string& name, const std::string& text) const
    {
        std::ofstream(JobDir() / name, std::ios::binary) << text;
    }
    void WriteMinimalJob(const std::vector<std::string>& leaveOut = {}) const
    {
        for (const auto& [name, text] : MinimalJobFiles())
            if (std::find(leaveOut.begin(), leaveOut.end(), name) == leaveOut.end())
                WriteFile(name, text);
    }

    // Runs the program with the given arguments (already quoted as needed);
    // standard input comes from /dev/null (NUL on Windows), standard error is
    // kept, and on Windows the boxes and dialogs shown are kept as well.
    int Run(const std::string& arguments)
    {
        const fs::path errors = m_Dir / "stderr.txt";
#ifdef _WIN32
        m_Dialogs.clear();
        const int status =
            WindowsRun::Run(std::string("\"") + TNF_TRANSLATOR_EXE + "\" " + arguments, errors, m_Dialogs);
#else
        const std::string command = std::string("\"") + TNF_TRANSLATOR_EXE + "\" " + arguments +
                                    " </dev/null 2>\"" + errors.string() + "\"";
        const int status = std::system(command.c_str());
#endif
        std::ifstream in(errors);
        std::stringstream text;
        text << in.rdbuf();
        m_Errors = text.str();
        return status;
    }
    int Translate(const std::string& output = "out.tnf")
    {
        return Run("\"" + JobDir().string() + "\" \"" + (m_Dir / output).string() + "\"");
    }

    fs::path OutputPath(const std::string& name = "out.tnf") const
    {
        return m_Dir / name;
    }

    std::string OutputText(const std::string& name = "out.tnf") const
    {
        std::ifstream in(OutputPath(name), std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }

    // The output file as a tree.
    io::CBlockPtr OutputTree(const std::string& name = "out.tnf") const
    {
        io::CToken_istream in(OutputText(name));
        io::CBlockPtr root(L"TarvexNeutralFile");
        in >> *root;
        return root;
    }

    const std::string& Errors() const
    {
        return m_Errors;
    }
#ifdef _WIN32
    // The boxes and dialogs of the last run, in the order they appeared.
    const std::vector<std::string>& Dialogs() const
    {
        return m_Dialogs;
    }
#endif

private:
    fs::path m_Dir;
    std::string m_Errors;
#ifdef _WIN32
    std::vector<std::string> m_Dialogs;
#endif
};

// The names of a block's children in order.
inline std::vector<std::string> ChildNames(const io::CBlock& block)
{
    std::vector<std::string> names;
    for (auto it = block.begin(); it != block.end(); ++it)
        names.push_back(block.Item(it)->Name().AsAnsi().str());
    return names;
}

// The child block of that name, or null.
inline io::CBlock* ChildBlock(const io::CBlock& block, const wchar_t* name)
{
    for (auto it = block.begin(); it != block.end(); ++it)
        if (block.Item(it)->IsBlock() && block.Item(it)->Name() == name)
            return static_cast<io::CBlock*>(block.Item(it).Item());
    return nullptr;
}

// The block reached through the child blocks of those names in turn, or null.
inline const io::CBlock* Descend(const io::CBlock& root, std::initializer_list<const wchar_t*> names)
{
    const io::CBlock* block = &root;
    for (const wchar_t* name : names)
    {
        block = ChildBlock(*block, name);
        if (!block)
            return nullptr;
    }
    return block;
}
