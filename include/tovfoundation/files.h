// tovfoundation files subsystem.
#pragma once

#include "tovfoundation/common.h"
