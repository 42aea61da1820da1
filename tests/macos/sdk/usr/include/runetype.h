#pragma once

#include <ctype.h>
