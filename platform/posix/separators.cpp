#include "platform/separators.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <locale.h>

namespace qmml::platform {
namespace {

constexpr Separators s_neutral = {'.', ','};

// Both characters in one word, so that a reader never sees half of an override.
constinit std::atomic<std::uint16_t> s_override = 0;
static_assert(std::atomic<std::uint16_t>::is_always_lock_free);

// The locale that numbers follow, as the C library would choose it. Null stands for the neutral one.
const char* numeric_locale() noexcept
{
    for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* name = std::getenv(variable);
        if (name && *name)
            return std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0 ? nullptr : name;
    }
    return nullptr;
}

// A decimal separator of several bytes does not fit a character; such locales and unknown ones count as neutral.
Separators ask_system(const char* name) noexcept
{
    const locale_t locale = newlocale(LC_NUMERIC_MASK, name, locale_t{});
    if (!locale)
        return s_neutral;
    const char* radix = nl_langinfo_l(RADIXCHAR, locale);
    const char decimal = radix && radix[0] && !radix[1] ? radix[0] : s_neutral.decimal;
    freelocale(locale);
    return {decimal, decimal == ',' ? ';' : s_neutral.list};
}

Separators of_locale() noexcept
{
    const char* name = numeric_locale();
    if (!name)
        return s_neutral;

    // The last answer of this thread. A name too long to keep is asked for each time.
    thread_local constinit struct {
        char name[64];
        Separators separators;
    } t_last = {};
    const std::size_t length = std::strlen(name);
    if (length >= sizeof t_last.name)
        return ask_system(name);
    if (std::memcmp(name, t_last.name, length + 1) != 0) {
        t_last.separators = ask_system(name);
        std::memcpy(t_last.name, name, length + 1);
    }
    return t_last.separators;
}

} // namespace

Separators separators() noexcept
{
    const std::uint16_t both = s_override.load(std::memory_order_relaxed);
    const char decimal = static_cast<char>(both & 0xFF), list = static_cast<char>(both >> 8);
    if (decimal && list)
        return {decimal, list};
    const Separators locale = of_locale();
    return {decimal ? decimal : locale.decimal, list ? list : locale.list};
}

void override_separators(char decimal, char list) noexcept
{
    const auto byte = [](char c) { return static_cast<unsigned char>(c); };
    s_override.store(static_cast<std::uint16_t>(byte(decimal) | byte(list) << 8), std::memory_order_relaxed);
}

} // namespace qmml::platform
