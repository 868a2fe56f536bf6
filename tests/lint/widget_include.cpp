// Does not compile: the rooms that draw nothing do not see Qt Widgets.
#include <QWidget>
