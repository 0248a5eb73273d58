#include <stdlib.h>

#include "support/environment.h"

namespace corvo::test {

void SetEnvironment(const char* name, const char* value) { value != nullptr ? setenv(name, value, 1) : unsetenv(name); }

}  // namespace corvo::test
