#include "resources/messages.h"

#include <iterator>

namespace qmml {
namespace {

constexpr QmmlString s_strings[] = {
    {12288, "Impossible d'initialiser le moteur de symboles"},
    {12289, "DebugBreak?"},
    {12290, "\n-- coordonnées dynamiques --"},
    {12291, "CDebugStackInfo no free items"},
    // Errors of a formula, in the order of their codes.
    {12292, "Expression vide"},
    {12293, "Identifiant inconnu"},
    {12294, "Parenthèse seule"},
    {12295, "Séparateur attendu"},
    {12296, "Erreur numérique ou de syntaxe"},
    {12297, "Erreur dans la formule"},
};
constexpr QmmlModule s_module = {s_strings, std::size(s_strings)};

} // namespace

const QmmlModule& own_messages() noexcept
{
    return s_module;
}

} // namespace qmml
