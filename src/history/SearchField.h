// The search field: plain, and aware of input methods.
#pragma once

#include "ui/TextField.h"

namespace corvatto {

class SearchField : public TextField {
    Q_OBJECT

public:
    // The pasteboard outlives the field.
    explicit SearchField(const Pasteboard& pasteboard);

    // True while an input method composes text, when all keys are its own.
    bool isComposing() const { return m_isComposing; }

protected:
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool m_isComposing = false;
};

} // namespace corvatto
