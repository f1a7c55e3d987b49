#pragma once

struct sqlite3_vfs;

namespace SettingsSimulation {

class SimulatedDisk;

/// SQLite's file system layer over a simulated disk.
/// Returns: a copy of `other` in which files and random numbers are those of the disk.
sqlite3_vfs diskLayer(SimulatedDisk& disk, const sqlite3_vfs& other);

}  // namespace SettingsSimulation
