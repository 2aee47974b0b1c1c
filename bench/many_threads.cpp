// SPDX-License-Identifier: GPL-2.0-or-later
// A process with as many threads as the argument says, which wait.  Says so with a line, and ends with its
// input.
#include <unistd.h>

#include <cstdlib>
#include <pthread.h>

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 64 * 1024);
    const auto wait = [](void *) -> void * {
        for (;;)
            pause();
    };
    for (long left = std::strtol(argv[1], nullptr, 10) - 1; left > 0; --left) {
        pthread_t thread;
        if (pthread_create(&thread, &attributes, wait, nullptr) != 0)
            return 1;
    }
    if (write(STDOUT_FILENO, "ready\n", 6) != 6)
        return 1;
    char byte;
    while (read(STDIN_FILENO, &byte, 1) > 0)
        ;
    _exit(0);
}
