// The scanner: bounded and zero-ended texts read alike, a value is the C library's, and what the formatter makes of it
// reads back.
#include "fuzz/fuzz_input.h"
#include "numtext/scan_number.h"

#include <cstring>
#include <qmml/numtext.h>

using namespace qmml::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ExactText text(data, size);
    const std::size_t length = std::strlen(text.get());
    double value = 0, bounded = 0;
    const bool read = Get_NU(text.get(), &value) == 1;
    const auto without_zero = std::make_unique<char[]>(length);
    if (length > 0)
        std::memcpy(without_zero.get(), text.get(), length);
    require(qmml::scan_field(without_zero.get(), without_zero.get() + length, '.', bounded) == read);
    if (read) {
        require(same_number(value, bounded));
        char* end = nullptr;
        const double expected = std::strtod(text.get(), &end);
        require(value != value || (end != text.get() && same_number(value, expected)));
        char written[64];
        double back = 0, again = 0;
        ConvWrapper(value, QMML_GENERAL_FORMAT, 15, 17, written);
        require(Get_NU(written, &back) == 1 && same_number(back, value));
        ConvWrapper1(value, written);
        require(Get_NU(written, &back) == 1);
        ConvWrapper1(back, written); // 15 digits of 15 digits are the same
        require(Get_NU(written, &again) == 1 && same_number(again, back));
    }
    for (const char* cursor = text.get(); Get_NU_EOB(&cursor, nullptr) == 1;)
        require(cursor <= text.get() + length);
    return 0;
}
