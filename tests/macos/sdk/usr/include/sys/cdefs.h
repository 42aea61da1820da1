#pragma once

#define __BEGIN_DECLS extern "C" {
#define __END_DECLS }
#define __dead2 __attribute__((__noreturn__))
