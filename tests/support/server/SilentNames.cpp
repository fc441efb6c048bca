// A preloaded library that replaces getaddrinfo() as if no name server answered. It prints the name
// to standard error and fails after a minute.

#include <chrono>
#include <cstdio>
#include <future>
#include <netdb.h>

extern "C" int getaddrinfo(const char *node, const char * /*service*/, const addrinfo * /*hints*/,
                           addrinfo ** /*result*/)
{
    std::fprintf(stderr, "Looking for %s\n", node);
    std::promise<void> answer;
    answer.get_future().wait_for(std::chrono::minutes(1));
    return EAI_AGAIN;
}
