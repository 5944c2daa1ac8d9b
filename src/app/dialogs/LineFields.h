// SPDX-License-Identifier: GPL-3.0-or-later
//
// Speed and format of a line as fields of a form: the usual ones to choose from, any other to be
// typed.
#pragma once

#include "app/dialogs/FormFields.h"

class QComboBox;

namespace qor {

struct LineFields {
    QComboBox* speed;
    QComboBox* format;
};

LineFields AddLineFields(CForm& form, const std::shared_ptr<PortForm>& record);

} // namespace qor
