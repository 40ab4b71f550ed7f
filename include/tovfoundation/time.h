// tovfoundation time subsystem.
#pragma once

#include "tovfoundation/common.h"
