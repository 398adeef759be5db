#include <zuSystem/zuOutputStreamVersion.h>

namespace zu {

const int zuMajorOutputStreamVersion = 6;
const int zuMinorOutputStreamVersion = 32;

} // namespace zu
