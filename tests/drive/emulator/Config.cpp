#include "Config.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <functional>
#include <sstream>

namespace zib::drive {
namespace {

std::string trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t\r");
    const auto last = text.find_last_not_of(" \t\r");
    return first == std::string::npos ? std::string{} : text.substr(first, last - first + 1);
}

bool readInt(const std::string& text, int& value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size();
}

bool readYesNo(const std::string& text, bool& value)
{
    value = text == "yes";
    return value || text == "no";
}

bool readAccess(const std::string& text, NodeAccess& value)
{
    static const std::map<std::string, NodeAccess> kWords{{"open", NodeAccess::Open},
                                                          {"denied", NodeAccess::Denied},
                                                          {"read-only", NodeAccess::ReadOnly},
                                                          {"busy", NodeAccess::Busy},
                                                          {"missing", NodeAccess::Missing}};
    const auto found = kWords.find(text);
    value = found == kWords.end() ? NodeAccess::Open : found->second;
    return found != kWords.end();
}

bool readKind(const std::string& text, DiscKind& value)
{
    static const std::map<std::string, DiscKind> kWords{
        {"cd-r", DiscKind::CdR}, {"cd-rw", DiscKind::CdRw}, {"cd-rom", DiscKind::Pressed}};
    const auto found = kWords.find(text);
    value = found == kWords.end() ? DiscKind::CdR : found->second;
    return found != kWords.end();
}

bool readTestBit(const std::string& text, TestBit& value)
{
    static const std::map<std::string, TestBit> kWords{
        {"kept", TestBit::Kept}, {"dropped", TestBit::Dropped}, {"ignored", TestBit::Ignored}};
    const auto found = kWords.find(text);
    value = found == kWords.end() ? TestBit::Kept : found->second;
    return found != kWords.end();
}

bool readSenseFormat(const std::string& text, SenseFormat& value)
{
    static const std::map<std::string, SenseFormat> kWords{
        {"fixed", SenseFormat::Fixed}, {"descriptor", SenseFormat::Descriptor}, {"none", SenseFormat::None}};
    const auto found = kWords.find(text);
    value = found == kWords.end() ? SenseFormat::Fixed : found->second;
    return found != kWords.end();
}

bool readSpeeds(const std::string& text, std::vector<int>& speeds)
{
    std::istringstream words{text};
    std::vector<int> read;
    for (int speed = 0; words >> speed;) {
        read.push_back(speed);
    }
    std::ranges::sort(read, std::greater{});
    speeds = read;
    return words.eof();
}

bool readMinutes(const std::string& text, std::int32_t& frames)
{
    int minutes = 0;
    const bool read = readInt(text, minutes) && minutes > 0 && minutes <= 99;
    frames = minutes * 60 * 75;
    return read;
}

/// One configuration file being read.
class Reader
{
public:
    Reader(Config& config, std::string folder) : m_config(config), m_folder(std::move(folder)) {}

    void readLine(const std::string& raw)
    {
        const std::string line = trimmed(raw);
        if (line.empty() || line.front() == '#') {
            return;
        }
        if (line.front() == '[' && line.back() == ']') {
            beginDrive(line.substr(1, line.size() - 2));
            return;
        }
        const auto equals = line.find('=');
        const bool understood = m_drive != nullptr && equals != std::string::npos &&
                                set(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
        if (!understood) {
            m_config.problems.push_back("not understood: " + line);
        }
    }

private:
    void beginDrive(const std::string& name)
    {
        m_drive = &m_config.drives[name];
        m_drive->name = name;
        m_drive->folder = m_folder;
        m_drive->journal = m_folder + "/journal.txt";
    }

    [[nodiscard]] std::string path(const std::string& value) const
    {
        return value.empty() || value.front() == '/' ? value : m_folder + "/" + value;
    }

    bool addFault(const std::string& value)
    {
        auto rule = parseFault(value);
        if (!rule) {
            return false;
        }
        // Two equal lines are two rules, and each counts for itself.
        const auto same = std::ranges::count_if(
            m_drive->faults, [&](const FaultRule& other) { return other.text.starts_with(value); });
        rule->text += same > 0 ? " #" + std::to_string(same) : "";
        m_drive->faults.push_back(*rule);
        return true;
    }

    bool set(const std::string& key, const std::string& value)
    {
        DriveConfig& drive = *m_drive;
        const std::map<std::string, std::function<bool()>> keys{
            {"vendor", [&] { return setText(drive.vendor, value); }},
            {"product", [&] { return setText(drive.product, value); }},
            {"revision", [&] { return setText(drive.revision, value); }},
            {"folder", [&] { return setText(drive.folder, path(value)); }},
            {"journal", [&] { return setText(drive.journal, path(value)); }},
            {"disc", [&] { return setText(drive.disc, value == "none" ? "" : path(value)); }},
            {"recipe", [&] { return setText(drive.recipe, path(value)); }},
            {"open", [&] { return readAccess(value, drive.access); }},
            {"disc-kind", [&] { return readKind(value, drive.discKind); }},
            {"disc-minutes", [&] { return readMinutes(value, drive.discFrames); }},
            {"disc-frames", [&] { return readInt(value, drive.discFrames); }},
            {"sao", [&] { return readYesNo(value, drive.sao); }},
            {"tao", [&] { return readYesNo(value, drive.tao); }},
            {"simulation", [&] { return readYesNo(value, drive.simulation); }},
            {"test-bit", [&] { return readTestBit(value, drive.testBit); }},
            {"buffer-protection", [&] { return readYesNo(value, drive.bufferProtection); }},
            {"writes-cd-r", [&] { return readYesNo(value, drive.writesCdR); }},
            {"writes-cd-rw", [&] { return readYesNo(value, drive.writesCdRw); }},
            {"sense-format", [&] { return readSenseFormat(value, drive.senseFormat); }},
            {"block-descriptor", [&] { return readYesNo(value, drive.blockDescriptor); }},
            {"cd-text", [&] { return readYesNo(value, drive.cdText); }},
            {"c2-pointers", [&] { return readYesNo(value, drive.c2Pointers); }},
            {"write-speeds", [&] { return readSpeeds(value, drive.writeSpeeds); }},
            {"read-speed", [&] { return readInt(value, drive.readSpeed); }},
            {"closing-ms", [&] { return readInt(value, drive.closingMs); }},
            {"blanking-ms", [&] { return readInt(value, drive.blankingMs); }},
            {"fault", [&] { return addFault(value); }}};
        const auto found = keys.find(key);
        return found != keys.end() && found->second();
    }

    static bool setText(std::string& target, const std::string& value)
    {
        target = value;
        return true;
    }

    Config& m_config;
    std::string m_folder;
    DriveConfig* m_drive = nullptr;
};

} // namespace

Config readConfig(const std::string& path, const std::string& text)
{
    Config config;
    std::istringstream file{text};
    Reader reader{config, std::filesystem::absolute(path).parent_path().string()};
    for (std::string line; std::getline(file, line);) {
        reader.readLine(line);
    }
    return config;
}

} // namespace zib::drive
