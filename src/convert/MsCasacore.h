// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <casacore/tables/Tables/Table.h>
#include <casacore/tables/Tables/TableColumn.h>

#include <set>
#include <string>

#include "convert/MsTables.h"
#include "core/Status.h"

namespace lumo {

// What the sources share that speak to casacore; no other source may include this.

/// How every table of a set is opened: no lock is taken, so no lock file is made or written.
[[nodiscard]] casacore::Table openMsTable(const std::string& path);

/// Opens a subtable. Fails with its name when there is none.
[[nodiscard]] Status openMsSubtable(const casacore::Table& main, const std::string& name,
                                    casacore::Table& subtable);

/// The first of the column's units, "" when it states none.
[[nodiscard]] std::string msColumnUnit(const casacore::TableColumn& column);
/// Fails when a column is missing or states another unit than `unit`.
[[nodiscard]] Status checkMsColumn(const casacore::Table& table, const std::string& tableName,
                                   const std::string& column, const std::string& unit);

/// The fixed frame or scale of a column of measures ("UTC"), "" when it states none.
[[nodiscard]] std::string msColumnReference(const casacore::TableColumn& column);

/// Fails when the files of tiled columns are smaller than their tiles: casacore reads what is missing as
/// zeros. A set that is put together from others is checked part by part.
[[nodiscard]] Status checkMsTiles(const casacore::Table& main, const std::set<std::string>& columns);

/// Reads the subtables of an open set; throws what casacore throws.
[[nodiscard]] Status readMsTables(const casacore::Table& main, MsTables& tables);

}  // namespace lumo
