// runtime_beside_qmml LIBQMML RUNTIME_ALONE: linked to qmml first and to the runtime's user behind it, so that a
// reference without a version would end in qmml. Both generators must keep their own streams.
#define _POSIX_C_SOURCE 200809L
#include "runtime_user.h"

#include <qmml/random.h>

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

enum { draws = 100 };

static int failures;

static void expect(int holds, const char* what)
{
    if (!holds) {
        fprintf(stderr, "FAILED: %s\n", what);
        ++failures;
    }
}

static int reference_stream(const char* program, int* out)
{
    FILE* pipe = popen(program, "r");
    int n = 0;
    while (pipe != NULL && n < draws && fscanf(pipe, "%d", &out[n]) == 1)
        ++n;
    if (pipe != NULL)
        pclose(pipe);
    return n;
}

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    int runtime[draws], own[draws];
    expect(reference_stream(argv[2], runtime) == draws, "the runtime's stream could be had");

    inirnd_(7);
    for (int i = 0; i < draws; ++i)
        own[i] = rand_();

    inirnd_(7);
    runtime_user_seed(5);
    int runtime_same = 1, own_same = 1;
    for (int i = 0; i < draws; ++i) {
        runtime_same &= runtime_user_next() == runtime[i];
        own_same &= rand() == own[i]; // this program was linked to qmml's
    }
    expect(runtime_same, "the other library draws from the runtime");
    expect(own_same, "the program's rand is qmml's, and the runtime's user leaves its stream alone");

    void* library = dlopen(argv[1], RTLD_NOW);
    expect(library != NULL, "the library loads by name");
    if (library != NULL) {
        int (*loaded_rand)(void);
        void (*loaded_srand)(unsigned);
        void* address = dlsym(library, "rand");
        memcpy(&loaded_rand, &address, sizeof address);
        address = dlsym(library, "srand");
        memcpy(&loaded_srand, &address, sizeof address);
        inirnd_(7);
        loaded_srand(5); // has no effect here, and must not reach the runtime
        expect(loaded_rand() == own[0], "dlsym finds qmml's rand and srand");
    }
    return failures != 0;
}
