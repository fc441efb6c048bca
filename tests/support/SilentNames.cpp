// A module to be loaded before the C library, for a program whose name servers do not answer: it
// says what it is asked for on the error output, and then keeps who asks waiting for a minute.

#include <chrono>
#include <cstdio>
#include <netdb.h>
#include <thread>

extern "C" int getaddrinfo(const char *node, const char * /*service*/, const addrinfo * /*hints*/,
                           addrinfo ** /*result*/)
{
    std::fprintf(stderr, "Looking for %s\n", node);
    std::this_thread::sleep_for(std::chrono::minutes(1));
    return EAI_AGAIN;
}
