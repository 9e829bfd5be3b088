#pragma once

// What of other systems' headers the running of programs by tests needs (Program.h).
#include <cstdio>

#define WIFEXITED(status) ((status) >= 0)
#define WEXITSTATUS(status) (status)
#define WTERMSIG(status) (status)
#define popen _popen
#define pclose _pclose
