// SafeFiles.cpp - regular input files, and temporary output files that are
// removed at every end of the program that can be caught.
#include "core/lib/vellum/SafeFiles.h"

#include "core/lib/vellum/FileSystemPath.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace io
{
namespace
{
// The temporary files not yet finished with. A signal handler reads them, so
// they are fixed buffers, each published by its flag once its path is in it.
constexpr int k_Slots = 4;
constexpr size_t k_PathBytes = 4096;
char g_PendingPaths[k_Slots][k_PathBytes];
volatile std::sig_atomic_t g_PendingUsed[k_Slots];
std::atomic<bool> g_HandlersInstalled{false};

void RemovePath(const char* path)
{
#ifdef _WIN32
    _unlink(path);
#else
    ::unlink(path);
#endif
}

void RemovePending()
{
    for (int i = 0; i < k_Slots; ++i)
        if (g_PendingUsed[i])
        {
            RemovePath(g_PendingPaths[i]);
            g_PendingUsed[i] = 0;
        }
}

extern "C" void RemovePendingAtExit()
{
    RemovePending();
}

// Removes the files, then lets the signal do what it would have done.
extern "C" void RemovePendingOnSignal(int signal)
{
    RemovePending();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// A signal that the program ignores or handles already is left as it is.
void CatchIfDefault(int signal)
{
    const auto earlier = std::signal(signal, RemovePendingOnSignal);
    if (earlier != SIG_DFL && earlier != SIG_ERR)
        std::signal(signal, earlier);
}

void InstallHandlers()
{
    if (g_HandlersInstalled.exchange(true))
        return;
    std::atexit(RemovePendingAtExit);
    CatchIfDefault(SIGINT);
    CatchIfDefault(SIGTERM);
    CatchIfDefault(SIGABRT);
#ifdef SIGHUP
    CatchIfDefault(SIGHUP);
#endif
}

bool Register(const std::string& path)
{
    if (path.size() >= k_PathBytes)
        return false;
    for (int i = 0; i < k_Slots; ++i)
        if (!g_PendingUsed[i])
        {
            std::memcpy(g_PendingPaths[i], path.c_str(), path.size() + 1);
            g_PendingUsed[i] = 1;
            return true;
        }
    return false;
}

// Sixteen hex digits that nobody can foresee: the system's random source,
// mixed with the clock and the process, for systems whose source is weak.
std::string RandomPart()
{
    static std::random_device device;
    std::uint64_t bits = (std::uint64_t(device()) << 32) ^ device();
    bits ^= static_cast<std::uint64_t>(std::chrono::high_resolution_clock::now().time_since_epoch().count());
#ifdef _WIN32
    bits ^= std::uint64_t(_getpid()) << 40;
#else
    bits ^= std::uint64_t(::getpid()) << 40;
#endif
    static const char k_Hex[] = "0123456789abcdef";
    std::string text(16, '0');
    for (int i = 0; i < 16; ++i)
        text[static_cast<size_t>(i)] = k_Hex[(bits >> (4 * i)) & 0xF];
    return text;
}

// Opens a new file at path for writing; fails if anything, a link included,
// is there already.
std::FILE* CreateExclusively(const std::string& path)
{
#ifdef _WIN32
    const std::wstring wide = ToFileSystemPath_G(path).wstring();
    HANDLE handle =
        CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return nullptr;
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_WRONLY | _O_BINARY);
    if (descriptor < 0)
    {
        CloseHandle(handle);
        return nullptr;
    }
    std::FILE* file = _fdopen(descriptor, "wb");
    if (!file)
        _close(descriptor);
    return file;
#else
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return nullptr;
    std::FILE* file = ::fdopen(descriptor, "wb");
    if (!file)
        ::close(descriptor);
    return file;
#endif
}
} // namespace

std::FILE* OpenRegularFile_G(const std::string& path, std::uint64_t& size, std::uint64_t limit)
{
    size = 0;
#ifdef _WIN32
    std::error_code error;
    const std::filesystem::path native = ToFileSystemPath_G(path);
    if (!std::filesystem::is_regular_file(native, error))
        return nullptr;
    const std::uintmax_t bytes = std::filesystem::file_size(native, error);
    if (error || bytes > limit)
        return nullptr;
    std::FILE* file = _wfopen(native.wstring().c_str(), L"rb");
    if (!file)
        return nullptr;
    size = bytes;
#else
    // Opened without waiting, so that a pipe can't hold the run; only then
    // is it asked what it is.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0 ||
        static_cast<std::uint64_t>(status.st_size) > limit)
    {
        ::close(descriptor);
        return nullptr;
    }
    std::FILE* file = ::fdopen(descriptor, "rb");
    if (!file)
    {
        ::close(descriptor);
        return nullptr;
    }
    size = static_cast<std::uint64_t>(status.st_size);
#endif
    return file;
}

size_t ReadFileAt_G(std::FILE* file, std::uint64_t offset, char* buffer, size_t count)
{
#ifdef _WIN32
    if (_fseeki64(file, static_cast<long long>(offset), SEEK_SET) != 0)
        return 0;
#else
    if (::fseeko(file, static_cast<off_t>(offset), SEEK_SET) != 0)
        return 0;
#endif
    return std::fread(buffer, 1, count, file);
}

bool ReadRegularFile_G(const std::string& path, std::string& data, std::uint64_t limit)
{
    data.clear();
    std::uint64_t size = 0;
    std::FILE* file = OpenRegularFile_G(path, size, limit);
    if (!file)
        return false;
    // Large blocks: the layout files of big boards run to hundreds of MB. A
    // file that grows while it is read is read up to the limit.
    constexpr size_t k_Block = 1 << 22;
    size_t used = 0;
    for (;;)
    {
        data.resize(used + k_Block);
        const size_t n = std::fread(data.data() + used, 1, k_Block, file);
        used += n;
        if (n < k_Block || used > limit)
            break;
    }
    std::fclose(file);
    if (used > limit)
    {
        data.clear();
        return false;
    }
    data.resize(used);
    return true;
}

std::FILE* CreateTemporaryFile_G(const std::string& target, std::string& path)
{
    path.clear();
    InstallHandlers();
    for (int attempt = 0; attempt < 64; ++attempt)
    {
        const std::string candidate = target + "." + RandomPart() + ".tmp";
        // Registered before it exists, so that no moment leaves it behind.
        const bool registered = Register(candidate);
        std::FILE* file = CreateExclusively(candidate);
        if (file)
        {
            path = candidate;
            return file;
        }
        if (registered)
            ReleaseTemporaryFile_G(candidate);
        // Only a name that is taken is worth another try.
        std::error_code error;
        if (!std::filesystem::exists(std::filesystem::symlink_status(ToFileSystemPath_G(candidate), error)))
            return nullptr;
    }
    return nullptr;
}

void ReleaseTemporaryFile_G(const std::string& path)
{
    for (int i = 0; i < k_Slots; ++i)
        if (g_PendingUsed[i] && path == g_PendingPaths[i])
            g_PendingUsed[i] = 0;
}
} // namespace io
