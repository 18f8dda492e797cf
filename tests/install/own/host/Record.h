// The application's own header of a name that the library has as well.
#pragma once

struct Record {
    double values[4];
};
