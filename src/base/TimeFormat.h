#pragma once

#include <QString>

namespace TimeFormat {
// Seconds as m:ss below one hour and h:mm:ss from one hour on; negative and
// non-finite values read 0:00.
QString duration(double seconds);
}
