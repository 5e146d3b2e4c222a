#pragma once

#include "Faults.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zib::drive {

/// What the recordable disc is made of.
enum class DiscKind : std::uint8_t
{
    CdR,
    CdRw,
    Pressed
};

/// How opening the device node answers.
enum class NodeAccess : std::uint8_t
{
    Open,
    Denied,
    ReadOnly,
    Busy,
    Missing
};

/// What becomes of the test bit of the write parameters.
enum class TestBit : std::uint8_t
{
    Kept,    ///< taken, shown and obeyed
    Dropped, ///< taken without a word, and not kept
    Ignored  ///< taken and shown, and written for real
};

/// How a drive puts its sense data (SPC-3, 4.5).
enum class SenseFormat : std::uint8_t
{
    Fixed,
    Descriptor,
    None ///< a check condition that says nothing more
};

/// One section of the configuration: a drive and the disc in it. README.md describes every key.
struct DriveConfig
{
    std::string name;    ///< "sr0"; also the node's name under /dev
    std::string folder;  ///< where the drive keeps its state, without trailing separator
    std::string journal; ///< path of the journal
    std::string vendor = "ZIB";
    std::string product = "EMULATED CD-RW";
    std::string revision = "1.00";
    NodeAccess access = NodeAccess::Open;
    std::string disc;   ///< path stem of the disc's files; empty when the drive is empty
    std::string recipe; ///< file that describes what a new disc already holds
    DiscKind discKind = DiscKind::CdR;
    std::int32_t discFrames = 80 * 60 * 75; ///< nominal playing time, pregap included
    bool sao = true;
    bool tao = true;
    bool simulation = true;
    TestBit testBit = TestBit::Kept;
    bool bufferProtection = true;
    bool writesCdR = true;
    bool writesCdRw = true;
    bool cdText = true;
    SenseFormat senseFormat = SenseFormat::Fixed;
    bool blockDescriptor = false; ///< mode pages come behind one, whether it is wanted or not
    bool c2Pointers = true;
    std::vector<int> writeSpeeds{48, 32, 24, 16, 8, 4}; ///< times 150 KiB/s, fastest first
    int readSpeed = 48;
    int closingMs = 0;  ///< how long closing keeps the drive busy
    int blankingMs = 0; ///< how long blanking keeps the drive busy
    std::vector<FaultRule> faults;
};

/// The whole configuration file.
struct Config
{
    std::map<std::string, DriveConfig> drives;
    std::vector<std::string> problems; ///< lines that made no sense, with the reason
};

/// Reads the @p text of the configuration file at @p path, whose folder is where relative paths begin.
[[nodiscard]] Config readConfig(const std::string& path, const std::string& text);

} // namespace zib::drive
