#include "fit/Model.h"

#include <algorithm>

namespace velmorak::fitting {

namespace {

using expression::Linearity;
using expression::Operand;
using expression::Step;

/// How values depend on chosen parameters: 0 not at all, 1 linearly, 2 otherwise.
class Degrees {
public:
    Degrees(const Program& program, const std::vector<bool>& isChosen);

    int of(const Operand& operand) const;

private:
    int of(const Step& step) const;

    const std::vector<bool>& isChosen;
    std::vector<int> buffers;
};

Degrees::Degrees(const Program& program, const std::vector<bool>& isChosen)
    : isChosen(isChosen), buffers(program.code().buffers) {
    for (const Step& step : program.code().steps) {
        buffers[step.out.position] = of(step);
    }
}

int Degrees::of(const Operand& operand) const {
    if (operand.in == Operand::In::Buffer) {
        return buffers[operand.position];
    }
    return operand.in == Operand::In::Column && operand.position > 0 && isChosen[operand.position - 1] ? 1 : 0;
}

int Degrees::of(const Step& step) const {
    const int most = std::max({of(step.in[0]), of(step.in[1]), of(step.in[2])});
    switch (step.function ? step.function->linearity : Linearity::None) {
        case Linearity::Sum:
            return most;
        case Linearity::Product:
            return std::min(2, of(step.in[0]) + of(step.in[1]));
        case Linearity::Quotient:
            return of(step.in[1]) == 0 ? of(step.in[0]) : 2;
        case Linearity::Choice:
            return of(step.in[0]) == 0 ? most : 2;
        case Linearity::None:
            break;
    }
    return most == 0 ? 0 : 2;
}

}  // namespace

std::vector<bool> linearAmong(const Program& program, std::vector<bool> wanted) {
    std::vector<bool> chosen(wanted.size(), false);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        chosen[i] = wanted[i];
        if (wanted[i] && Degrees(program, chosen).of(program.code().result) > 1) {
            chosen[i] = false;
        }
    }
    return chosen;
}

}  // namespace velmorak::fitting
