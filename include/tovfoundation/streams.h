// tovfoundation streams subsystem.
#pragma once

#include "tovfoundation/common.h"
