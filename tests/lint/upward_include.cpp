// Does not compile: the store does not see the rooms above it.
#include "history/HistoryViewModel.h"
