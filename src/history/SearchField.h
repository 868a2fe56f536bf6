// The search field: a text field without a frame.
#pragma once

#include "ui/TextField.h"

namespace corvatto {

class SearchField : public TextField {
    Q_OBJECT

public:
    // The pasteboard outlives the field.
    explicit SearchField(const Pasteboard& pasteboard);
};

} // namespace corvatto
