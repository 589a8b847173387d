// JobFixture.h - a job directory made by a test, the translator run on it as a
// user would run it, and the output file read back as a block tree.
#pragma once

#include "core/lib/vellum/streamio/Block.h"
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

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
    // standard input comes from /dev/null, standard error is kept.
    int Run(const std::string& arguments)
    {
        const fs::path errors = m_Dir / "stderr.txt";
        const std::string command = std::string("\"") + TNF_TRANSLATOR_EXE + "\" " + arguments +
                                    " </dev/null 2>\"" + errors.string() + "\"";
        const int status = std::system(command.c_str());
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

    fs::path OutputPath(const std::string& name = "out.tnf") const { return m_Dir / name; }

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

    const std::string& Errors() const { return m_Errors; }

private:
    fs::path m_Dir;
    std::string m_Errors;
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
