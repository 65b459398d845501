// The fast way to evaluate a formula for one case: short steps that hand their result on in a register, for ordinary
// values of the variables.
#pragma once

#include "interp/range.h"

#include <vector>

namespace qmml::interp {

struct Step {
    // Takes the previous step's result, gives its own.
    double (*run)(const Step& step, double previous) noexcept;
    const double* source[3];
    double* target;
    double substitute; // the result, of the size that is expected, where an operand is outside the domain
    bool* spoilt;      // set then
};

class Steps {
public:
    // Of a linked program; none where nothing can be promised about it. May throw std::bad_alloc.
    void build(const Program& program, Frame& frame);

    bool available() const noexcept { return m_result != nullptr; }

    // For calm variables. False when the values would not do all the same: the program must be executed instead.
    bool evaluate(Frame& frame, double* result) const noexcept
    {
        double value = 0.0;
        const Step* step = m_steps.data();
        const Step* const end = step + m_steps.size();
        // Calls from different places are told apart by the branch predictor.
        if (step != end) {
            value = step->run(*step, value);
            if (++step != end) {
                value = step->run(*step, value);
                if (++step != end) {
                    value = step->run(*step, value);
                    while (++step != end)
                        value = step->run(*step, value);
                }
            }
        }
        if (frame.spoilt) [[unlikely]] {
            frame.spoilt = false;
            return false;
        }
        *result = *m_result;
        return true;
    }

private:
    std::vector<Step> m_steps;
    const double* m_result = nullptr;
};

} // namespace qmml::interp
