#include <windows.h>

#include "windows/own_import.h"

OWN_IMPORT(Sleep);
