#include <zuSystem/zuProgressNotifierGroupCloser.h>

#include <zuSystem/zuProgressNotifierInterface.h>

namespace zu {

zuProgressNotifierGroupCloser::~zuProgressNotifierGroupCloser()
{
    if (mNotifier)
        mNotifier->closeGroup();
}

} // namespace zu
