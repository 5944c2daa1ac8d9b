// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/LogForms.h"

#include "base/TerminalText.h"
#include "base/Text.h"
#include "platform/File.h"
#include "session/SessionFields.h"
#include "session/SessionPath.h"
#include "session/SpanText.h"
#include "views/FormNumbers.h"

namespace qor {

namespace {

struct StationField {
    const char* name;
    std::string StationInformation::*text;
};
constexpr StationField StationFields[] = {
    {"cruiseId", &StationInformation::cruiseId},
    {"operatorName", &StationInformation::operatorName},
    {"latitude", &StationInformation::latitude},
    {"longitude", &StationInformation::longitude},
    {"zone", &StationInformation::zone},
    {"comment", &StationInformation::comment},
    {"stationId", &StationInformation::stationId},
    {"cast", &StationInformation::cast},
};

/// A folder that logs can go to: there, and no file. An empty one is that of the program.
std::string FolderFault(const std::string& folder) {
    if (HasControlCharacter(folder))
        return "A folder's name holds no control characters.";
    return folder.empty() || IsDirectory(folder) ? "" : "There is no such folder.";
}

template <class Record, class Member>
void TakeChange(Record& now, const Record& opened, const Record& form, Member Record::*member) {
    if (form.*member != opened.*member)
        now.*member = form.*member;
}

LogNaming NamingOf(const NamingForm& form) {
    LogNaming naming;
    naming.logNamingMode = form.mode;
    naming.logDirectory = WithSeparator(form.directory);
    naming.logUserFileName = Trim(form.userFileName);
    naming.numbered = form.numbered && form.mode == LogNamingMode::UserFileName;
    naming.number = naming.logUserFileName == form.numberedName ? form.number : 1;
    naming.sqmBaseName = Trim(form.sqmBaseName);
    naming.sqmSequence =
        static_cast<std::int32_t>(WholeCount(Trim(form.sqmSequence)).value_or(0) % 1000);
    return naming;
}

} // namespace

FormFaults CheckForm(const StationInformation& station, LogNamingMode naming) {
    FormFaults faults;
    for (const StationField& field : StationFields) {
        StationInformation alone;
        alone.*field.text = station.*field.text;
        faults.Add(field.name, StationFault(alone, LogNamingMode::UserFileName));
    }
    // With a cast that is well, what is left is the station's.
    StationInformation named;
    named.stationId = station.stationId;
    named.cast = "AA";
    faults.Add("stationId", StationFault(named, naming));
    named = {};
    named.cast = station.cast;
    faults.Add("cast", StationFault(named, naming));
    return faults;
}

StationInformation WithChanges(StationInformation now, const StationInformation& opened,
                               const StationInformation& form) {
    for (const StationField& field : StationFields)
        TakeChange(now, opened, form, field.text);
    return now;
}

LogOptionsForm FormOf(const LogOptions& options, bool hasGps) {
    LogOptionsForm form;
    form.timeStamps = options.timeStampEnabled;
    form.gpsHeader = options.gpsHeaderEnabled;
    form.hasGps = hasGps;
    form.useDuration = options.durationEnabled;
    form.duration = SpanText(options.duration);
    form.useRepeat = options.repeatEnabled;
    form.repeat = SpanText(options.repeatInterval);
    form.loggingSounds = options.loggingSounds;
    form.overwriteExisting = options.overwriteExisting;
    return form;
}

FormFaults CheckForm(const LogOptionsForm& form) {
    FormFaults faults;
    if (form.gpsHeader && !form.hasGps)
        faults.Add("gpsHeader", "No instrument has the role of the GPS.");
    if (form.useDuration)
        faults.Add("duration", SpanFault(Trim(form.duration)));
    if (form.useRepeat)
        faults.Add("repeat", SpanFault(Trim(form.repeat)));
    if (form.useRepeat && !form.useDuration)
        faults.Add("repeat", "A repeat needs a duration: the length of each log.");
    return faults;
}

std::optional<LogOptions> SettingsOf(const LogOptionsForm& form) {
    if (!CheckForm(form).Ok())
        return std::nullopt;
    LogOptions options;
    options.timeStampEnabled = form.timeStamps;
    options.gpsHeaderEnabled = form.gpsHeader;
    options.durationEnabled = form.useDuration;
    options.duration = ParseSpan(Trim(form.duration)).value_or(LogSpan{});
    options.repeatEnabled = form.useRepeat;
    options.repeatInterval = ParseSpan(Trim(form.repeat)).value_or(LogSpan{});
    options.loggingSounds = form.loggingSounds;
    options.overwriteExisting = form.overwriteExisting;
    return options;
}

NamingForm FormOf(const LogNaming& naming, const StationInformation& station) {
    NamingForm form;
    form.mode = naming.logNamingMode;
    form.directory = naming.logDirectory;
    form.userFileName = naming.logUserFileName;
    form.sqmBaseName = naming.sqmBaseName;
    form.sqmSequence = std::to_string(naming.sqmSequence);
    form.station = station;
    form.numbered = naming.numbered;
    form.number = naming.number;
    form.numberedName = naming.logUserFileName;
    return form;
}

FormFaults CheckForm(const NamingForm& form) {
    FormFaults faults;
    faults.Add("directory", FolderFault(form.directory));
    LogNaming one;
    one.logUserFileName = Trim(form.userFileName);
    const bool user = form.mode == LogNamingMode::UserFileName;
    faults.Add("userFileName", user && one.logUserFileName.empty() ? "Name a file."
                               : user                              ? NamingFault(one)
                                                                   : "");
    one = {};
    one.sqmBaseName = Trim(form.sqmBaseName);
    const bool sqm = form.mode == LogNamingMode::Sqm;
    if (sqm) {
        faults.Add("sqmBaseName", NamingFault(one));
        faults.Add("sqmSequence", NumberFault(form.sqmSequence, SequenceRange.least,
                                              SequenceRange.greatest, true));
    }
    if (form.mode == LogNamingMode::AutoCast) {
        const FormFaults station = CheckForm(form.station, form.mode);
        faults.Add("station", station.Of("stationId"));
        faults.Add("station", station.Of("cast"));
    }
    return faults;
}

std::optional<LogNaming> SettingsOf(const NamingForm& form) {
    return CheckForm(form).Ok() ? std::optional(NamingOf(form)) : std::nullopt;
}

LogNaming WithChanges(LogNaming now, const NamingForm& opened, const NamingForm& form) {
    const LogNaming before = NamingOf(opened), wanted = NamingOf(form);
    TakeChange(now, before, wanted, &LogNaming::logNamingMode);
    TakeChange(now, before, wanted, &LogNaming::logDirectory);
    TakeChange(now, before, wanted, &LogNaming::sqmBaseName);
    TakeChange(now, before, wanted, &LogNaming::sqmSequence);
    if (wanted.logUserFileName != before.logUserFileName)
        now.number = 1;
    TakeChange(now, before, wanted, &LogNaming::logUserFileName);
    return now;
}

std::string NextName(const NamingForm& form) {
    const std::optional<LogNaming> naming = SettingsOf(form);
    return naming ? LogDisplayName(*naming, form.station) : std::string();
}

FormFaults CheckForm(const OverrideForm& form) {
    FormFaults faults = CheckForm(form.station, form.mode);
    if (form.displayName.empty())
        faults.Add("displayName", "The next log has no name; change the naming first.");
    return faults;
}

FormFaults CheckForm(const SettingsForm& form) {
    FormFaults faults;
    if (form.sessionLog)
        faults.Add("sessionLogDirectory", FolderFault(form.sessionLogDirectory));
    faults.Add("textSize", NumberFault(form.textSize, 90, 200, true));
    return faults;
}

std::optional<int> TextSizeOf(const SettingsForm& form) {
    if (!CheckForm(form).Of("textSize").empty())
        return std::nullopt;
    return static_cast<int>(WholeCount(Trim(form.textSize)).value_or(100));
}

std::string TextSizeText(int percent) {
    return std::to_string(percent);
}

FormFaults CheckForm(const TareForm& form) {
    FormFaults faults;
    if (!form.hasProfiler)
        faults.Add("pressure", "There is no profiler; give an instrument its role.");
    faults.Add("pressure", NumberFault(form.pressure, TareRange.least, TareRange.greatest));
    return faults;
}

std::optional<double> SettingsOf(const TareForm& form) {
    return CheckForm(form).Ok() ? NumberIn(form.pressure) : std::nullopt;
}

} // namespace qor
