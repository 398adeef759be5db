#pragma once

// What the benchmarks that measure peak memory share: each case runs in a forked child, so
// that the peak of one case does not mix with another's, and reports a plain result struct
// through a pipe.

#include "benchMeasure.h"

#include <zuSceneGraph/zuSceneGraph.h>

#include <sys/wait.h>
#include <unistd.h>

namespace bench {

// Sends the result to the parent and ends the child, without freeing what it built: the
// exit would otherwise take as long as a load.
template <class Result>
[[noreturn]] void finishChild(int pipeEnd, const Result& result)
{
    const ssize_t written = ::write(pipeEnd, &result, sizeof(result));
    ::_exit(written == static_cast<ssize_t>(sizeof(result)) ? 0 : 1);
}

// Runs `body(pipeEnd)` in a forked child with the library started; the body ends with
// finishChild. A child that reports nothing gives a Result whose `ok` is false.
template <class Result, class Body>
Result runInChild(Body body)
{
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        zu::initializeZuSceneGraph();
        body(pipeEnds[1]);
        ::_exit(1);
    }
    ::close(pipeEnds[1]);
    Result result;
    const ssize_t got = child > 0 ? ::read(pipeEnds[0], &result, sizeof(result)) : -1;
    ::close(pipeEnds[0]);
    int status = 0;
    if (child > 0)
        ::waitpid(child, &status, 0);
    if (got != static_cast<ssize_t>(sizeof(result)))
        result.ok = false;
    return result;
}

} // namespace bench
