// Does not compile: the store's room does not see the history's.
#include "history/HistoryViewModel.h"
