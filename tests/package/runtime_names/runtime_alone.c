// Prints what the runtime gives behind srand(5) in a process that has never heard of qmml.
#include "runtime_user.h"

#include <stdio.h>

int main(void)
{
    runtime_user_seed(5);
    for (int i = 0; i < 100; ++i)
        printf("%d\n", runtime_user_next());
    return 0;
}
