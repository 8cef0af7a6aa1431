#pragma once

#include "Platform/ManualDispatch.h"

namespace pravik::test {

using pravik::ManualDispatch;

}  // namespace pravik::test
