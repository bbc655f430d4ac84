#include "group/trace_store.h"
