// block_reader_fuzz.cpp - reads a block tree from arbitrary bytes, writes it,
// and reads the text back: the second reading must give the same text, since
// the reader takes back everything the writer writes.
#include "core/lib/vellum/streamio/Block.h"
#include "core/lib/vellum/streamio/TokenStream.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace
{
std::string Write(const io::CBlock& block)
{
    io::CString_ostream out;
    out.SetPrecision(10);
    out << block;
    return out.str();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    io::CToken_istream in(std::string(reinterpret_cast<const char*>(data), size));
    io::CBlock first;
    in >> first;
    const std::string text = Write(first);

    io::CToken_istream again(text);
    io::CBlock second;
    again >> second;
    const std::string text2 = Write(second);
    // Names with the characters that end a name cannot come back the same,
    // and neither can a number written with fewer digits; what does come back
    // must be stable from there on.
    io::CToken_istream third(text2);
    io::CBlock last;
    third >> last;
    if (Write(last) != text2)
        __builtin_trap();
    return 0;
}
