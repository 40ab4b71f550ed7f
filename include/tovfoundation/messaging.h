// tovfoundation messaging subsystem.
#pragma once

#include "tovfoundation/common.h"
