#include "Faults.h"

#include "Operations.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <functional>
#include <span>
#include <sstream>
#include <utility>

namespace zib::drive {
namespace {

template <typename Number>
bool readNumber(std::string_view text, Number& value, int base = 10)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc{} && end == text.data() + text.size();
}

bool readCount(std::string_view text, std::uint32_t& value)
{
    if (text == "forever") {
        value = kForever;
        return true;
    }
    return readNumber(text, value);
}

bool readSense(std::string_view text, Sense& sense)
{
    const auto first = text.find('/');
    const auto second = text.find('/', first + 1);
    if (first == std::string_view::npos || second == std::string_view::npos) {
        return false;
    }
    return readNumber(text.substr(0, first), sense.key, 16) &&
           readNumber(text.substr(first + 1, second - first - 1), sense.asc, 16) &&
           readNumber(text.substr(second + 1), sense.ascq, 16);
}

bool readRange(std::string_view text, FaultRule& rule)
{
    // A minus sign in front belongs to the number, so the dividing one is sought after the first letter.
    const auto dash = text.find('-', 1);
    rule.ranged = true;
    if (dash == std::string_view::npos) {
        const bool read = readNumber(text, rule.firstLba);
        rule.lastLba = rule.firstLba;
        return read;
    }
    return readNumber(text.substr(0, dash), rule.firstLba) && readNumber(text.substr(dash + 1), rule.lastLba);
}

bool readErrno(std::string_view text, int& error)
{
    constexpr std::array kNames{std::pair{"EIO", EIO}, std::pair{"ENODEV", ENODEV}, std::pair{"EBUSY", EBUSY},
                                std::pair{"ENOMEM", ENOMEM}};
    for (const auto& [name, number] : kNames) {
        if (text == name) {
            error = number;
            return true;
        }
    }
    return false;
}

bool readFlip(std::string_view text, FaultRule& rule)
{
    const auto slash = text.find('/');
    return slash != std::string_view::npos && readNumber(text.substr(0, slash), rule.replyAt) &&
           readNumber(text.substr(slash + 1), rule.flipMask, 16);
}

bool readPatch(std::string_view text, FaultRule& rule)
{
    const auto slash = text.find('/');
    if (slash == std::string_view::npos || !readNumber(text.substr(0, slash), rule.replyAt)) {
        return false;
    }
    for (auto digits = text.substr(slash + 1); !digits.empty(); digits.remove_prefix(2)) {
        std::uint8_t byte = 0;
        if (digits.size() < 2 || !readNumber(digits.substr(0, 2), byte, 16)) {
            return false;
        }
        rule.patch.push_back(byte);
    }
    return !rule.patch.empty();
}

bool readSwapped(std::string_view text, FaultRule& rule)
{
    const auto slash = text.find('/');
    return slash != std::string_view::npos && readNumber(text.substr(0, slash), rule.swapped[0]) &&
           readNumber(text.substr(slash + 1), rule.swapped[1]);
}

bool readPlainWord(std::string_view word, FaultRule& rule)
{
    if (word == "after") {
        rule.after = true;
    } else if (word == "deferred") {
        rule.deferred = true;
    } else if (word == "reset") {
        rule.kind = FaultKind::Reset;
    } else if (word == "gone") {
        rule.kind = FaultKind::Gone;
    } else if (word == "pull") {
        rule.kind = FaultKind::Pull;
    } else if (word == "noise") {
        rule.kind = FaultKind::Noise;
    } else if (word == "transport") {
        rule.kind = FaultKind::Transport;
        rule.hostStatus = kHostError;
    } else if (word == "ignored") {
        rule.kind = FaultKind::Ignored;
    } else {
        return false;
    }
    return true;
}

/// The keys that say which commands a rule strikes.
std::optional<bool> readCondition(std::string_view key, std::string_view value, FaultRule& rule)
{
    if (key == "nth") {
        return readNumber(value, rule.nth) && rule.nth > 0;
    }
    if (key == "times") {
        return readCount(value, rule.times);
    }
    if (key == "lba") {
        return readRange(value, rule);
    }
    if (key == "page") {
        return readNumber(value, rule.page, 16);
    }
    return std::nullopt;
}

/// The keys of rules that read from another place than they were asked for.
bool readElsewhere(std::string_view key, std::string_view value, FaultRule& rule)
{
    if (key == "jitter") {
        rule.kind = FaultKind::Jitter;
        return readNumber(value, rule.shiftSamples);
    }
    if (key == "missing") {
        rule.kind = FaultKind::Missing;
        return readNumber(value, rule.missingLba);
    }
    rule.kind = FaultKind::Swapped;
    return key == "swapped" && readSwapped(value, rule);
}

/// The keys that change what a reply holds.
std::optional<bool> readReplyFault(std::string_view key, std::string_view value, FaultRule& rule)
{
    if (key == "flip") {
        rule.kind = FaultKind::Flip;
        return readFlip(value, rule);
    }
    if (key == "patch") {
        rule.kind = FaultKind::Patch;
        return readPatch(value, rule);
    }
    if (key == "short") {
        rule.kind = FaultKind::Short;
        return readNumber(value, rule.replyAt);
    }
    return std::nullopt;
}

bool changesReply(FaultKind kind)
{
    return kind == FaultKind::Noise || kind == FaultKind::Jitter || kind == FaultKind::Flip ||
           kind == FaultKind::Patch || kind == FaultKind::Short || kind == FaultKind::Missing ||
           kind == FaultKind::Swapped;
}

bool readWord(std::string_view word, FaultRule& rule)
{
    const auto equals = word.find('=');
    if (equals == std::string_view::npos) {
        return readPlainWord(word, rule);
    }
    const auto key = word.substr(0, equals);
    const auto value = word.substr(equals + 1);
    if (const auto read = readCondition(key, value, rule)) {
        return *read;
    }
    if (key == "sense") {
        rule.kind = FaultKind::Sense;
        return readSense(value, rule.sense);
    }
    if (key == "delay") {
        rule.kind = FaultKind::Delay;
        return readCount(value, rule.delayMs);
    }
    if (key == "host") {
        rule.kind = FaultKind::Transport;
        return readNumber(value, rule.hostStatus, 16) && rule.hostStatus > 0;
    }
    if (key == "errno") {
        rule.kind = FaultKind::Error;
        return readErrno(value, rule.error);
    }
    if (const auto read = readReplyFault(key, value, rule)) {
        return *read;
    }
    if (key == "status") {
        rule.kind = FaultKind::Status;
        return readNumber(value, rule.status, 16) && rule.status > 0;
    }
    return readElsewhere(key, value, rule);
}

std::uint64_t identityOf(const FaultRule& rule)
{
    const std::uint64_t hash = std::hash<std::string>{}(rule.text);
    return hash == 0 ? 1 : hash;
}

bool matches(const FaultRule& rule, int operation, const CommandRange& range)
{
    const bool named = rule.operation == kAnyOperation || rule.operation == operation ||
                       (rule.operation == kMediaOperation && needsMedia(operation));
    if (!named || (rule.page != kAnyPage && rule.page != range.page)) {
        return false;
    }
    if (!rule.ranged) {
        return true;
    }
    return range.known && range.first <= rule.lastLba && range.first + range.count > rule.firstLba;
}

bool countAndStrike(const FaultRule& rule, FaultCounter& counter)
{
    ++counter.matches;
    const bool strikes =
        counter.matches >= rule.nth && (rule.times == kForever || counter.matches - rule.nth < rule.times);
    counter.strikes += strikes ? 1 : 0;
    return strikes;
}

void addTo(FaultVerdict& verdict, const FaultRule& rule, const FaultCounter& counter)
{
    if (rule.kind == FaultKind::Delay) {
        verdict.delayMs = std::max(verdict.delayMs, rule.delayMs);
    } else if (changesReply(rule.kind)) {
        verdict.readFaults.push_back(rule);
        verdict.readStrikes.push_back(counter.strikes);
    } else if (!verdict.failure) {
        verdict.failure = rule;
    }
}

} // namespace

std::optional<FaultRule> parseFault(std::string_view text)
{
    FaultRule rule;
    rule.text = text;
    std::istringstream words{rule.text};
    std::string word;
    words >> word;
    const auto operation = operationFromName(word);
    if (!operation) {
        return std::nullopt;
    }
    rule.operation = *operation;
    int read = 0;
    while (words >> word) {
        if (!readWord(word, rule)) {
            return std::nullopt;
        }
        ++read;
    }
    return read > 0 ? std::optional(rule) : std::nullopt;
}

FaultCounter* counterOf(const FaultRule& rule, FaultCounter* counters, std::size_t size)
{
    const std::span all{counters, size};
    const auto identity = identityOf(rule);
    for (auto& counter : all) {
        if (counter.rule == identity) {
            return &counter;
        }
    }
    for (auto& counter : all) {
        if (counter.rule == 0) {
            counter = {identity, 0, 0};
            return &counter;
        }
    }
    return nullptr;
}

FaultVerdict judge(const std::vector<FaultRule>& rules, int operation, const CommandRange& range,
                   FaultCounter* counters, std::size_t size)
{
    FaultVerdict verdict;
    for (const auto& rule : rules) {
        if (!matches(rule, operation, range)) {
            continue;
        }
        FaultCounter* counter = counterOf(rule, counters, size);
        if (counter != nullptr && countAndStrike(rule, *counter)) {
            addTo(verdict, rule, *counter);
        }
    }
    return verdict;
}

void dropCounters(const std::vector<FaultRule>& rules, FaultCounter* counters, std::size_t size)
{
    for (auto& counter : std::span{counters, size}) {
        const bool stands = std::ranges::any_of(
            rules, [&](const FaultRule& rule) { return identityOf(rule) == counter.rule; });
        if (!stands) {
            counter = {};
        }
    }
}

bool hasStruck(const std::vector<FaultRule>& rules, FaultKind kind, const FaultCounter* counters,
               std::size_t size)
{
    const std::span all{counters, size};
    return std::ranges::any_of(rules, [&](const FaultRule& rule) {
        return rule.kind == kind && std::ranges::any_of(all, [&](const FaultCounter& counter) {
                   return counter.rule == identityOf(rule) && counter.strikes > 0;
               });
    });
}

} // namespace zib::drive
