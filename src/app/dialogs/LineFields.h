// SPDX-License-Identifier: GPL-3.0-or-later
//
// Speed and format of a line as a field of a form: the usual ones to choose from, any other to be
// typed.
#pragma once

#include "app/dialogs/FormFields.h"

class QComboBox;
class QLabel;

namespace qor {

struct LineFields {
    QComboBox* speed;
    QComboBox* format;
    QLabel* origin; ///< where the speed comes from, in a few words
};

LineFields AddLineFields(CForm& form, const CTheme& theme, const std::shared_ptr<PortForm>& record);

} // namespace qor
