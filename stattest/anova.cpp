#include "stattest/anova.h"

#include <qmml/distrib.h>

#include "core/compare.h"
#include "stattest/error.h"
#include "stattest/kernels.h"

#include <cstdint>

namespace qmml::stattest {
namespace {

struct Moments {
    std::int64_t count = 0;
    double mean = 0;
    double squares = 0;

    // The one-pass recurrence.
    void follow(const double* values, int n) noexcept
    {
        for (int i = 0; i < n; ++i) {
            const double d = values[i] - mean;
            mean += d / static_cast<double>(++count);
            squares += (values[i] - mean) * d;
        }
    }

    void merge(const Moments& other) noexcept
    {
        if (other.count == 0)
            return;
        if (count == 0) {
            *this = other;
            return;
        }
        const auto mine = static_cast<double>(count), others = static_cast<double>(other.count);
        const double d = other.mean - mean, part = others / (mine + others);
        mean += d * part;
        squares += other.squares + d * d * (mine * part);
        count += other.count;
    }
};

// Up to s_moment_block values the recurrence over them all; beyond, the moments of the groups merged in order.
class Total {
public:
    void add(const Moments& group, const double* few_values) noexcept
    {
        m_merged.merge(group);
        if (m_merged.count <= s_moment_block && few_values)
            m_followed.follow(few_values, static_cast<int>(group.count));
    }
    const Moments& moments() const noexcept { return m_merged.count <= s_moment_block ? m_followed : m_merged; }

private:
    Moments m_merged, m_followed;
};

// The values of a group that are not missing, a block at a time.
class Blocks {
public:
    Blocks(const double* data, std::int64_t count) noexcept : m_next(data), m_end(data + count)
    {
        while (m_end != m_next && is_nan(m_end[-1])) // so that the last block is known for the last
            --m_end;
    }

    bool at_end() const noexcept { return m_next == m_end; }

    // The next block, with the distances from a centre in place of the values if there is one.
    const double* read(int& n, const double* centre) noexcept
    {
        const double* block = m_buffer;
        if (m_end - m_next >= s_moment_block && s_test_kernels->all_finite(m_next, s_moment_block)) {
            block = m_next;
            n = s_moment_block;
            m_next += n;
        } else {
            for (n = 0; n < s_moment_block && m_next != m_end; ++m_next)
                if (!is_nan(*m_next))
                    m_buffer[n++] = *m_next;
        }
        if (centre) {
            s_test_kernels->distances(m_buffer, block, n, *centre);
            block = m_buffer;
        }
        return block;
    }

private:
    const double* m_next;
    const double* m_end;
    double m_buffer[s_moment_block];
};

Moments moments_of_group(const double* data, std::int64_t count, const double* centre, Total& total) noexcept
{
    Moments group;
    const double* block = nullptr;
    for (Blocks blocks(data, count); !blocks.at_end();) {
        int n = 0;
        block = blocks.read(n, centre);
        if (group.count == 0 && blocks.at_end()) {
            group.follow(block, n);
            total.add(group, block);
            return group;
        }
        const BlockMoments moments = s_test_kernels->moments(block, n);
        group.merge({n, moments.mean, moments.squares});
    }
    total.add(group, nullptr);
    return group;
}

enum class Judged { tested, too_few, no_variability };

Judged judge(const Moments& total, double squares_within, double df_between, VarianceRatio& result, int& error) noexcept
{
    result.df_between = df_between;
    result.df_within = static_cast<double>(total.count) - df_between - 1;
    error = 1;
    if (is_less(result.df_within, 1.0) || is_less(result.df_between, 1.0))
        return Judged::too_few;
    error = 2;
    const double between = (total.squares - squares_within) / result.df_between;
    const double within = squares_within / result.df_within;
    if (is_less(within, 0.0))
        return Judged::no_variability;
    result.f = between / within;
    result.p = xftest(result.df_between, result.df_within, result.f);
    if (is_less(result.p, 0.0))
        result.p = 1;
    return Judged::tested;
}

} // namespace

bool one_way_anova(const double* data, int groups, const int* sizes, bool with_levene, Anova& result,
                   int& error) noexcept
{
    error = s_no_memory;
    Total total, levene_total;
    double squares_within = 0, levene_within = 0;
    int groups_with_values = 0; // declared: all of them may be missing
    for (int g = 0; g < groups; ++g) {
        if (sizes[g] < 1)
            continue;
        ++groups_with_values;
        const Moments group = moments_of_group(data, sizes[g], nullptr, total);
        squares_within += group.squares;
        if (with_levene)
            levene_within += moments_of_group(data, sizes[g], &group.mean, levene_total).squares;
        data += sizes[g];
    }

    error = 1;
    const Moments& all = total.moments();
    if (is_less(static_cast<double>(all.count), static_cast<double>(groups)))
        return false;
    error = 2;
    if (is_less(all.squares, 0.0) ||
        judge(all, squares_within, groups_with_values - 1.0, result.main, error) != Judged::tested)
        return false;
    // Levene's test counts the empty groups too; it may fail alone.
    if (with_levene)
        static_cast<void>(judge(levene_total.moments(), levene_within, groups - 1.0, result.levene, error));
    return true;
}

} // namespace qmml::stattest
