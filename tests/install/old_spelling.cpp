// Without the project's name in front, a header of the library would stand in the way of an
// application's own.
#include <host/Record.h>
