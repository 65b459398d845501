// Distinct integers: the draws and answers of the plain rule, its edges; the stack of event sources.

#include "core/memory.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <qmml/core.h>
#include <qmml/random.h>
#include <vector>

namespace {

using Integers = std::vector<int>;

// The rule with a real list and a linear search.
Integers plain_selection(int count, int low, int high)
{
    const std::int64_t range = std::int64_t{high} - low;
    const auto draw = [](std::int64_t size) {
        return std::min(static_cast<std::int64_t>(std::floor(rnd_(0) * static_cast<double>(size))), size - 1);
    };
    Integers chosen;
    if (range / count < 51) {
        Integers list(static_cast<std::size_t>(range + 1));
        std::iota(list.begin(), list.end(), low);
        while (chosen.size() < static_cast<std::size_t>(count)) {
            const auto at = list.begin() + draw(static_cast<std::int64_t>(list.size()));
            chosen.push_back(*at);
            list.erase(at);
        }
    } else {
        while (chosen.size() < static_cast<std::size_t>(count)) {
            const auto value = static_cast<int>(low + draw(range + 1));
            if (std::find(chosen.begin(), chosen.end(), value) == chosen.end())
                chosen.push_back(value);
        }
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

TEST(UniqueIntegers, AreThoseOfThePlainRule)
{
    struct Case {
        int count, low, high;
    };
    const Case cases[] = {
        {2, 1, 102},           {2, 1, 103},      {1, -5, 5},        {4, 1, 5},      {63, 0, 63},
        {500, -1000, 2000},    {40, 1, 3000},    {100, -7, 50'000}, {3, 0, 99'999}, {50, INT_MIN, INT_MAX},
        {1, INT_MIN, INT_MAX}, {900, 1, 40'000}, {1500, -9, 7000}};
    for (const Case& c : cases)
        for (int seed : {1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << c.count << " of " << c.low << ".." << c.high);
            RndState state = {};
            PushRndState(&state);
            rnd_(-seed);
            const RndState start = state;
            Integers out(static_cast<std::size_t>(c.count) + 1, 99);
            EXPECT_EQ(PyloSelectUniqueRandomIntegersInRange(c.count, c.low, c.high, out.data()), 1);
            EXPECT_EQ(out.back(), 99);
            out.pop_back();
            const int next = rand_();
            state = start;
            EXPECT_EQ(out, plain_selection(c.count, c.low, c.high));
            EXPECT_EQ(rand_(), next); // as many draws
            PopRndState();
        }
}

TEST(UniqueIntegers, Edges)
{
    Integers out = {9, 9, 9, 9, 9, 9, 9};
    const auto select = [&](int count, int low, int high) {
        return PyloSelectUniqueRandomIntegersInRange(count, low, high, out.data());
    };
    EXPECT_EQ(select(3, 2, 1), 0);
    EXPECT_EQ(select(0, 1, 9), 0);
    EXPECT_EQ(select(-1, 1, 9), 0);
    EXPECT_EQ(out, Integers(7, 9));
    EXPECT_EQ(select(3, 7, 7), 1);
    EXPECT_EQ(out, (Integers{0, 9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(select(7, -2, 2), 1);
    EXPECT_EQ(out, (Integers{-2, -1, 0, 1, 2, 0, 0}));
    Integers many(2000);
    qmml::fail_allocation(1);
    EXPECT_EQ(PyloSelectUniqueRandomIntegersInRange(2000, 1, 5000, many.data()), 0);
    qmml::fail_allocation(1);
    EXPECT_EQ(select(1, 1, 1'000'000), 0);
    qmml::fail_allocation(0);
    EXPECT_EQ(PyloSelectUniqueRandomIntegersInRange(3, 1, 9, nullptr), 0);
    EXPECT_EQ(QMMLSetLastError(0), 12661);
}

TEST(VariableList, IsSearched)
{
    const int list[] = {0, 3, -1};
    EXPECT_EQ(PyloDoesVariableExistInList(3, list, 3), 1);
    EXPECT_EQ(PyloDoesVariableExistInList(1, list, 3), 0);
    EXPECT_EQ(PyloDoesVariableExistInList(3, list, 0), 0);
    EXPECT_EQ(PyloDoesVariableExistInList(3, list, -1), 0);
    EXPECT_EQ(PyloDoesVariableExistInList(-3, list, 3), 0);
    EXPECT_EQ(PyloDoesVariableExistInList(0, nullptr, 3), 0);
}

struct Counted : EventSource {
    unsigned references = 1;
};

unsigned add_reference(EventSource* source)
{
    return ++static_cast<Counted*>(source)->references;
}

TEST(EventSources, FormAStackThatLeavesReferencesAlone)
{
    const EventSourceOps ops = {nullptr, add_reference, nullptr};
    Counted a{{&ops}}, b{{&ops}};
    pop_event_source();
    EXPECT_EQ(get_event_source(), nullptr);
    for (int i = 0; i < 100; ++i)
        push_event_source(&a);
    push_event_source(&b);
    EXPECT_EQ(get_event_source(), &b);
    EXPECT_EQ(b.references, 2u);
    pop_event_source();
    EXPECT_EQ(get_event_source(), &a);
    for (int i = 0; i < 100; ++i)
        pop_event_source();
    EXPECT_EQ(get_event_source(), nullptr);
    EXPECT_EQ(a.references, 2u);
    qmml::fail_allocation(1);
    push_event_source(&a);
    EXPECT_EQ(get_event_source(), nullptr);
}

} // namespace
