// Larger per-thread caches. They live on the heap: a library's per-thread storage has to fit the loader's small
// reserve.
#pragma once

#include "distrib/guard.h"
#include "platform/thread_local.h"

#include <cstdint>
#include <new>

namespace qmml {

// The calling thread's object of type T, made on first use and deleted when the thread ends. Null when memory is short
// or the thread is ending: the caller then computes without a cache.
template <class T>
class ThreadCache {
public:
    static T* get() noexcept
    {
        if (s_object) [[likely]]
            return s_object;
        return make();
    }

private:
    struct Owner {
        ~Owner()
        {
            delete s_object;
            s_object = nullptr;
            s_ended = true;
        }
        void enlist() noexcept {} // the first use registers the destructor
    };

    [[gnu::noinline]] static T* make() noexcept
    {
        if (s_ended)
            return nullptr;
        static thread_local Owner s_owner;
        s_owner.enlist();
        return s_object = new (std::nothrow) T;
    }

    static inline constinit QMML_THREAD_LOCAL T* s_object = nullptr;
    static inline constinit QMML_THREAD_LOCAL bool s_ended = false;
};

// Values f(0) .. f(Size - 1) of a function with a parameter, each computed when it is first asked for. To forget them
// all costs nothing: a value counts while its stamp is the current one.
template <int Size>
class LazyTable {
public:
    void bind(double parameter) noexcept
    {
        if (same_bits(parameter, m_parameter) && m_current != 0)
            return;
        m_parameter = parameter;
        if (++m_current == 0) {
            for (auto& stamp : m_stamps)
                stamp = 0;
            m_current = 1;
        }
    }

    template <class Function>
    double get(int i, Function function) noexcept
    {
        if (m_stamps[i] != m_current) {
            m_values[i] = function();
            m_stamps[i] = m_current;
        }
        return m_values[i];
    }

private:
    double m_parameter = 0;
    std::uint32_t m_current = 0;
    std::uint32_t m_stamps[Size] = {};
    double m_values[Size];
};

// Sums of the terms 0 .. k in ascending order, extended on demand.
template <int Size>
class RunningSums {
public:
    void forget() noexcept { m_known = 0; }

    template <class Term>
    double get(int k, Term term) noexcept
    {
        for (; m_known <= k; ++m_known)
            m_sums[m_known] = m_known == 0 ? term(0) : m_sums[m_known - 1] + term(m_known);
        return m_sums[k];
    }

private:
    int m_known = 0;
    double m_sums[Size];
};

} // namespace qmml
