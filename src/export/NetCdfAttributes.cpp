// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/NetCdfAttributes.h"

namespace qor {

void SetAttributes(CNetCdfFile& file, int variable, const FrameAttributes& attributes) {
    for (const FrameAttribute& attribute : attributes)
        if (const auto* text = std::get_if<std::string>(&attribute.value))
            file.SetText(variable, attribute.name.c_str(), *text);
        else
            file.SetBytes(variable, attribute.name.c_str(),
                          std::get<std::vector<signed char>>(attribute.value));
}

int AddGrid(CNetCdfFile& file, const FrameLayout& layout, int number) {
    const WavelengthGrid& grid = layout.grids[static_cast<std::size_t>(number)];
    const int over[] = {file.AddDimension(grid.name, grid.wavelengths.size())};
    const int variable = file.AddVariable(grid.name, NetCdfType::Double, over, {});
    SetAttributes(file, variable, layout.gridAttributes);
    file.Write(variable, {{0}, {grid.wavelengths.size()}}, grid.wavelengths.data());
    return over[0];
}

} // namespace qor
