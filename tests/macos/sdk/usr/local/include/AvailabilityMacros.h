#pragma once

#include <os/availability.h>
