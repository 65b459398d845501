#include <qmml/missing.h>

int XOR(int a, int b)
{
    return (a != 0) != (b != 0);
}

int ThreeCond(int a, int b, int c)
{
    return (c ? a : b) != 0;
}

int lookbr(void)
{
    return 0;
}
