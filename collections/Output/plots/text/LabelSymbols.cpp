#include "Output/plots/text/LabelText.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velmorak {

namespace {

struct Symbol {
    std::string_view command;
    std::string_view text;
};

/// Sorted by command.
constexpr std::array symbols = {
    Symbol{"Delta", "Δ"},      Symbol{"Gamma", "Γ"},
    Symbol{"Lambda", "Λ"},     Symbol{"Leftarrow", "⇐"},
    Symbol{"Omega", "Ω"},      Symbol{"Phi", "Φ"},
    Symbol{"Pi", "Π"},         Symbol{"Psi", "Ψ"},
    Symbol{"Rightarrow", "⇒"}, Symbol{"Sigma", "Σ"},
    Symbol{"Theta", "Θ"},      Symbol{"Upsilon", "Υ"},
    Symbol{"Xi", "Ξ"},         Symbol{"alpha", "α"},
    Symbol{"angle", "∠"},      Symbol{"approx", "≈"},
    Symbol{"ast", "∗"},        Symbol{"beta", "β"},
    Symbol{"bullet", "•"},     Symbol{"cdot", "·"},
    Symbol{"cdots", "⋯"},      Symbol{"chi", "χ"},
    Symbol{"circ", "∘"},       Symbol{"cos", "cos"},
    Symbol{"dagger", "†"},     Symbol{"degree", "°"},
    Symbol{"delta", "δ"},      Symbol{"div", "÷"},
    Symbol{"ell", "ℓ"},        Symbol{"epsilon", "ϵ"},
    Symbol{"equiv", "≡"},      Symbol{"eta", "η"},
    Symbol{"exp", "exp"},      Symbol{"gamma", "γ"},
    Symbol{"ge", "≥"},         Symbol{"geq", "≥"},
    Symbol{"gg", "≫"},         Symbol{"hbar", "ℏ"},
    Symbol{"in", "∈"},         Symbol{"infty", "∞"},
    Symbol{"int", "∫"},        Symbol{"iota", "ι"},
    Symbol{"kappa", "κ"},      Symbol{"lambda", "λ"},
    Symbol{"langle", "⟨"},     Symbol{"ldots", "…"},
    Symbol{"le", "≤"},         Symbol{"left", ""},
    Symbol{"leftarrow", "←"},  Symbol{"leftrightarrow", "↔"},
    Symbol{"leq", "≤"},        Symbol{"lesssim", "≲"},
    Symbol{"ll", "≪"},         Symbol{"ln", "ln"},
    Symbol{"log", "log"},      Symbol{"mp", "∓"},
    Symbol{"mu", "μ"},         Symbol{"nabla", "∇"},
    Symbol{"ne", "≠"},         Symbol{"neq", "≠"},
    Symbol{"nu", "ν"},         Symbol{"odot", "⊙"},
    Symbol{"omega", "ω"},      Symbol{"omicron", "ο"},
    Symbol{"oplus", "⊕"},      Symbol{"otimes", "⊗"},
    Symbol{"parallel", "∥"},   Symbol{"partial", "∂"},
    Symbol{"perp", "⊥"},       Symbol{"phi", "φ"},
    Symbol{"pi", "π"},         Symbol{"pm", "±"},
    Symbol{"prime", "′"},      Symbol{"propto", "∝"},
    Symbol{"psi", "ψ"},        Symbol{"quad", "  "},
    Symbol{"rangle", "⟩"},     Symbol{"rho", "ρ"},
    Symbol{"right", ""},       Symbol{"rightarrow", "→"},
    Symbol{"sigma", "σ"},      Symbol{"sim", "∼"},
    Symbol{"simeq", "≃"},      Symbol{"sin", "sin"},
    Symbol{"star", "⋆"},       Symbol{"sum", "∑"},
    Symbol{"tan", "tan"},      Symbol{"tau", "τ"},
    Symbol{"theta", "θ"},      Symbol{"times", "×"},
    Symbol{"to", "→"},         Symbol{"upsilon", "υ"},
    Symbol{"varepsilon", "ε"}, Symbol{"varphi", "ϕ"},
    Symbol{"xi", "ξ"},         Symbol{"zeta", "ζ"},
};

}  // namespace

std::string labelSymbol(const std::string& command) {
    const auto* const found =
        std::find_if(symbols.begin(), symbols.end(), [&](const Symbol& symbol) { return symbol.command == command; });
    return found == symbols.end() ? std::string() : std::string(found->text);
}

}  // namespace velmorak
