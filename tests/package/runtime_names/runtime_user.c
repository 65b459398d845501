#include "runtime_user.h"

#include <stdlib.h>

void runtime_user_seed(unsigned seed)
{
    srand(seed);
}

int runtime_user_next(void)
{
    return rand();
}
