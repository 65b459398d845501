// The C runtime's names, in the shared library only: there a symbol version keeps them apart from the runtime's own. An
// archive would replace those of the program it is linked into.
#include <qmml/export.h>
#include <qmml/random.h>

#include <cstdlib>

QMML_API int rand(void) noexcept
{
    return rand_();
}

QMML_API void srand(unsigned) noexcept {}
