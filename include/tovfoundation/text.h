// tovfoundation text subsystem.
#pragma once

#include "tovfoundation/common.h"
