// hkp_tokens_fuzz.cpp - drives the HKP token stream over arbitrary bytes with
// the mix of calls the readers make: tokens as words and numbers, rest of
// line, end test, and going back to a remembered place. A second stream sees
// the same bytes through a small window, as a large file is seen, and must
// give the same answers call for call.
#include "core/lib/vellum/streamio/TokenStream.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    // The first byte picks the pattern of calls; the rest is the file.
    const uint8_t pattern = data[0];
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    io::CToken_istream in(text);
    io::CToken_istream seen(text, AString(), 1 + pattern % 13);
    AString token, rest, seenText;
    double number = 0.0;
    int whole = 0;
    io::CAbstract_stream_pos mark = in.Tell();
    size_t steps = 0;
    size_t lastOffset = 0;
    while (!in.eof() && steps < 100000)
    {
        double seenNumber = number;
        int seenWhole = whole;
        seenText = token;
        switch ((pattern >> (steps % 4 * 2)) & 3)
        {
        case 0:
            in >> token;
            seen >> seenText;
            break;
        case 1:
            in >> number >> whole;
            seen >> seenNumber >> seenWhole;
            break;
        case 2:
            in.NewLine(rest);
            seen.NewLine(seenText);
            token = rest;
            break;
        default:
            in >> token;
            seen >> seenText;
            if (steps % 7 == 0 && in.Tell().m_Offset > mark.m_Offset)
            {
                // Go back once to an earlier place, as the bounded searches do.
                const io::CAbstract_stream_pos here = in.Tell();
                in.Seek(mark);
                seen.Seek(mark);
                in >> token;
                seen >> seenText;
                in.Seek(here);
                seen.Seek(here);
                mark = here;
            }
            break;
        }
        if (seenText != token || in.Tell().m_Offset != seen.Tell().m_Offset || in.eof() != seen.eof() ||
            in.TokenLine() != seen.TokenLine() ||
            !(seenNumber == number || (seenNumber != seenNumber && number != number)) || seenWhole != whole)
            __builtin_trap();
        // Every call moves forward or the run ends: no reader can loop forever.
        const size_t offset = in.Tell().m_Offset;
        if (offset <= lastOffset && !in.eof() && steps > 0 && (((pattern >> (steps % 4 * 2)) & 3) != 3))
            __builtin_trap();
        lastOffset = offset;
        ++steps;
    }
    return 0;
}
