#include <stdlib.h>

#include "support/environment.h"

namespace corvo::test {

// An empty value removes the variable: the runtime knows no empty ones.
void SetEnvironment(const char* name, const char* value) { _putenv_s(name, value != nullptr ? value : ""); }

}  // namespace corvo::test
