// Distinct random integers, and membership in a list.
#include "core/sort.h"
#include "random/generator.h"
#include "random/selection.h"

#include <qmml/core.h>
#include <qmml/random.h>

#include <algorithm>

namespace qmml {
namespace {

constexpr int s_unusable_array = 12661;

// Where the range is this many times the request, drawing with rejection takes the place of drawing from a list. The
// two give different answers for the same stream.
constexpr std::int64_t s_sparse = 51;

std::int64_t below(Generator& generator, std::int64_t size) noexcept
{
    const auto drawn = static_cast<std::int64_t>(generator.uniform() * static_cast<double>(size));
    return std::min(drawn, size - 1);
}

bool draw_from_list(int count, int low, std::int64_t size, int* out) noexcept
{
    constexpr int few = 1024;
    std::uint32_t places[few], scratch[few], *place = places, *room = scratch;
    Block<std::uint32_t> block(count > few ? 2 * std::int64_t{count} : 0);
    if (!block)
        return false;
    if (count > few) {
        place = block.data();
        room = place + count;
    }
    Generator generator;
    for (int i = 0; i < count; ++i)
        place[i] = static_cast<std::uint32_t>(below(generator, size - i));
    take_places(place, room, count);
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<int>(low + std::int64_t{place[i]});
    return true;
}

// By the engine for doubles, which hold every integer, where that pays.
void sort_integers(int* integers, int count) noexcept
{
    constexpr int few = 1024;
    double numbers[few], *number = numbers;
    Block<double> block(count > few ? count : 0);
    if (!block) {
        std::sort(integers, integers + count);
        return;
    }
    if (count > few)
        number = block.data();
    for (int i = 0; i < count; ++i)
        number[i] = integers[i];
    sort_ascending(number, count);
    for (int i = 0; i < count; ++i)
        integers[i] = static_cast<int>(number[i]);
}

// Until all are there: the draws that repeat one are lost.
template <class Set, class Keep>
void draw_distinct(int count, std::int64_t size, Set& set, Keep keep) noexcept
{
    Generator generator;
    for (int i = 0; i < count;) {
        const std::int64_t offset = below(generator, size);
        if (!set.insert(static_cast<std::uint32_t>(offset)))
            continue;
        keep(offset);
        ++i;
    }
}

bool draw_with_rejection(int count, int low, std::int64_t size, int* out) noexcept
{
    constexpr std::int64_t bits_worth_reading = 2048; // for each integer that is found in them
    if (size / count < bits_worth_reading) {
        BitSet chosen(size);
        if (!chosen)
            return false;
        draw_distinct(count, size, chosen, [](std::int64_t) {});
        chosen.for_each([&](std::int64_t offset) { *out++ = static_cast<int>(low + offset); });
        return true;
    }
    HashSet seen(count);
    if (!seen)
        return false;
    int* next = out;
    draw_distinct(count, size, seen, [&](std::int64_t offset) { *next++ = static_cast<int>(low + offset); });
    sort_integers(out, count);
    return true;
}

bool usable(int count, const int* list) noexcept
{
    if (list != nullptr || count < 1)
        return true;
    QMMLSetLastError(s_unusable_array);
    return false;
}

} // namespace
} // namespace qmml

int PyloSelectUniqueRandomIntegersInRange(int count, int low, int high, int* out)
{
    using namespace qmml;
    if (low > high || count < 1 || !usable(count, out))
        return 0;
    const std::int64_t range = std::int64_t{high} - low, size = range + 1;
    if (range == 0) {
        out[0] = 0; // not low: callers know it so
        return 1;
    }
    std::fill_n(out, count, 0);
    if (size <= count) {
        for (std::int64_t i = 0; i < size; ++i)
            out[i] = static_cast<int>(low + i);
        return 1;
    }
    return range / count < s_sparse ? draw_from_list(count, low, size, out)
                                    : draw_with_rejection(count, low, size, out);
}

int PyloDoesVariableExistInList(int count, const int* list, int variable)
{
    if (!qmml::usable(count, list) || variable < 1 || count < 1)
        return 0;
    return std::find(list, list + count, variable) != list + count;
}
