// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/options/CommandLine.h"

#include "app/options/AppText.h"
#include "app/options/LaunchOptionRules.h"
#include "app/options/OptionValues.h"
#include "base/CameraModes.h"
#include "capture/CaptureState.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>

#include <cmath>

namespace lumavex {

namespace {

/// Reads the option's value into the options; returns the error, or an empty text.
using Apply = QString (*)(const QString& value, LaunchOptions& options);

/// "WxH" as a size of at least one pixel.
std::optional<CGSize> sizeOf(const QString& value)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const auto match = form.match(value);
    const CGSize size{match.captured(1).toDouble(), match.captured(2).toDouble()};
    return match.hasMatch() && size.width > 0 && size.height > 0 ? std::optional(size) : std::nullopt;
}

QString applyRecord(const QString& value, LaunchOptions& options)
{
    bool isNumber = false;
    const double seconds = value.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(seconds) || seconds <= 0 || seconds > 1e6)
        return AppText::tr("must be a number of seconds above 0, like 10 or 2.5");
    options.recordSeconds = seconds;
    return {};
}

QString applyRate(const QString& value, LaunchOptions& options)
{
    bool isNumber = false;
    const int rate = value.toInt(&isNumber);
    if (!isNumber || rate < 1 || rate > 240)
        return AppText::tr("must be a whole number of frames a second from 1 to 240");
    options.framesPerSecond = rate;
    return {};
}

QString applySize(const QString& value, LaunchOptions& options)
{
    if (value == QLatin1String("screen")) {
        options.size = CGSize{};
        return {};
    }
    const CGSize size = sizeOf(value).value_or(CGSize{});
    if (size.width < 16 || size.height < 16 || size.width > 16384 || size.height > 16384)
        return AppText::tr("must be \"screen\" or a size from 16x16 to 16384x16384, like 1280x720");
    options.size = size;
    return {};
}

QString applySwitch(const QString& value, std::optional<bool>& target)
{
    if (value != QLatin1String("yes") && value != QLatin1String("no"))
        return AppText::tr("must be \"yes\" or \"no\"");
    target = value == QLatin1String("yes");
    return {};
}

/// Finds the value among the names; returns the error, or an empty text.
template <class Value>
QString applyChoice(const QString& value, std::initializer_list<std::pair<const char*, Value>> choices,
                    std::optional<Value>& target)
{
    QStringList names;
    for (const auto& [name, meaning] : choices) {
        if (value == QLatin1String(name)) {
            target = meaning;
            return {};
        }
        names.append(QLatin1String(name));
    }
    return AppText::tr("must be one of %1").arg(names.join(QStringLiteral(", ")));
}

/// Finds the value among the words of a choice outside the settings.
template <class Value>
QString applyWord(const QString& value, const Choice<Value>& choice, std::optional<Value>& target)
{
    QStringList words;
    for (const char* word : choice.words)
        words.append(QLatin1String(word));
    if (!words.contains(value))
        return AppText::tr("must be one of %1").arg(words.join(QStringLiteral(", ")));
    target = static_cast<Value>(words.indexOf(value));
    return {};
}

QString applySource(const QString& value, LaunchOptions& options)
{
    using Source = LaunchOptions::Source;
    return applyChoice<Source>(value,
                               {{"screen", Source::Screen},
                                {"camera", Source::Camera},
                                {"both", Source::Both},
                                {"both-camera", Source::BothCameraLarge}},
                               options.source);
}

QString applyType(const QString& value, LaunchOptions& options)
{
    return applyChoice<std::int64_t>(
        value, {{"entire", EntireScreen}, {"follow", FollowCursor}, {"region", Region}, {"window", WindowExclusive}},
        options.captureType);
}

QString applyRegion(const QString& value, LaunchOptions& options)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5}),(\\d{1,5}),(\\d{1,5}),(\\d{1,5})$"));
    const auto match = form.match(value);
    const LaunchOptions::Rectangle region{match.captured(1).toInt(), match.captured(2).toInt(),
                                          match.captured(3).toInt(), match.captured(4).toInt()};
    if (!match.hasMatch() || region.width < 1 || region.height < 1)
        return AppText::tr("must be X,Y,W,H in pixels from the upper-left corner, like 100,50,640,480");
    options.region = region;
    return {};
}

QString applyFollow(const QString& value, LaunchOptions& options)
{
    options.follow = sizeOf(value);
    return options.follow ? QString() : AppText::tr("must be a size like 640x480");
}

QString applyCameraSize(const QString& value, LaunchOptions& options)
{
    bool isNumber = false;
    const int code = value.toInt(&isNumber);
    if (!isNumber || !cameraPreset(code))
        return AppText::tr("must be a code from 0 to 7 (see --list-sizes)");
    options.cameraSize = code;
    return {};
}

template <LaunchOptions::List what>
QString applyList(const QString&, LaunchOptions& options)
{
    options.list = what;
    return {};
}

struct Option {
    const char* name;
    const char* value; ///< name of the value in the help; null for an option without one
    const char* help;
    Apply apply;
};

// The only table of options: help, parsing and the manual page derive from it.
const Option optionTable[] = {
    {"record", "SECONDS", QT_TRANSLATE_NOOP("Lumavex", "Record this long without a user, save and end."), applyRecord},
    {"output", "FILE", QT_TRANSLATE_NOOP("Lumavex", "The movie (with --record): a .mov, .mkv or .avi file."),
     [](const QString& value, LaunchOptions& options) { return readMoviePath(value, options.output); }},
    {"snapshot", "FILE", QT_TRANSLATE_NOOP("Lumavex", "Save one picture (PNG) without a user and end."),
     [](const QString& value, LaunchOptions& options) { return readPicturePath(value, options.snapshot); }},
    {"fps", "N", QT_TRANSLATE_NOOP("Lumavex", "Frames a second."), applyRate},
    {"size", "WxH|screen", QT_TRANSLATE_NOOP("Lumavex", "Size of the movie's frames."), applySize},
    {"sound", "yes|no", QT_TRANSLATE_NOOP("Lumavex", "Record the system's current sound input."),
     [](const QString& value, LaunchOptions& options) { return applySwitch(value, options.sound); }},
    {"cursor", "yes|no", QT_TRANSLATE_NOOP("Lumavex", "Draw the mouse cursor."),
     [](const QString& value, LaunchOptions& options) { return applySwitch(value, options.cursor); }},
    {"source", "SOURCE", QT_TRANSLATE_NOOP("Lumavex", "screen, camera, both or both-camera (camera large)."),
     applySource},
    {"type", "TYPE", QT_TRANSLATE_NOOP("Lumavex", "Of the screen: entire, follow (the cursor), region or window."),
     applyType},
    {"region", "X,Y,W,H", QT_TRANSLATE_NOOP("Lumavex", "The region, in pixels from the upper-left corner."),
     applyRegion},
    {"follow", "WxH", QT_TRANSLATE_NOOP("Lumavex", "Size of the rectangle that follows the cursor."), applyFollow},
    {"window", "TEXT", QT_TRANSLATE_NOOP("Lumavex", "The window whose name in --list-windows contains TEXT."),
     [](const QString& value, LaunchOptions& options) {
         options.window = value;
         return value.isEmpty() ? AppText::tr("must be part of a window's name") : QString();
     }},
    {"when-window-goes", "hold|others",
     QT_TRANSLATE_NOOP("Lumavex", "Hold its last picture then, or show all other windows."),
     [](const QString& value, LaunchOptions& options) {
         return applyWord(value, choices::whenWindowGoes, options.whenWindowGoes);
     }},
    {"camera", "NAME", QT_TRANSLATE_NOOP("Lumavex", "The camera of this name."),
     [](const QString& value, LaunchOptions& options) {
         options.camera = value;
         return value.isEmpty() ? AppText::tr("must be a camera's name") : QString();
     }},
    {"camera-size", "CODE", QT_TRANSLATE_NOOP("Lumavex", "The camera's resolution, a code of --list-sizes."),
     applyCameraSize},
    {"saturation", "N", QT_TRANSLATE_NOOP("Lumavex", "Of the camera's colours, 0 to 20; 10 changes nothing."),
     [](const QString& value, LaunchOptions& options) { return readSaturation(value, options.saturation); }},
    {"brightness", "N", QT_TRANSLATE_NOOP("Lumavex", "Of the camera's colours, -10 to 10; 0 changes nothing."),
     [](const QString& value, LaunchOptions& options) { return readBrightness(value, options.brightness); }},
    {"contrast", "N", QT_TRANSLATE_NOOP("Lumavex", "Of the camera's colours, 0 to 20; 10 changes nothing."),
     [](const QString& value, LaunchOptions& options) { return readContrast(value, options.contrast); }},
    {"secondary-position", "N", QT_TRANSLATE_NOOP("Lumavex", "Place of the small picture, 0 to 8 (see below)."),
     [](const QString& value, LaunchOptions& options) { return readPosition(value, options.secondaryPosition); }},
    {"secondary-size", "N", QT_TRANSLATE_NOOP("Lumavex", "Size of the small picture, 0 to 4 (see below)."),
     [](const QString& value, LaunchOptions& options) { return readSecondarySize(value, options.secondarySize); }},
    {"overlay", "FILE", QT_TRANSLATE_NOOP("Lumavex", "Draw this picture over everything."),
     [](const QString& value, LaunchOptions& options) {
         options.overlay = value;
         return value.isEmpty() ? AppText::tr("must name a picture file") : QString();
     }},
    {"overlay-position", "N", QT_TRANSLATE_NOOP("Lumavex", "Place of that picture, 0 to 8 (see below)."),
     [](const QString& value, LaunchOptions& options) { return readPosition(value, options.overlayPosition); }},
    {"overlay-size", "N", QT_TRANSLATE_NOOP("Lumavex", "Width of that picture in tens of pixels, 1 to 1638."),
     [](const QString& value, LaunchOptions& options) { return readOverlaySize(value, options.overlaySize); }},
    {"hide-own-windows", nullptr, QT_TRANSLATE_NOOP("Lumavex", "Leave Lumavex's own windows out of the picture."),
     [](const QString&, LaunchOptions& options) {
         options.hideOwnWindows = true;
         return QString();
     }},
    {"overwrite", nullptr, QT_TRANSLATE_NOOP("Lumavex", "Replace FILE if it exists."),
     [](const QString&, LaunchOptions& options) {
         options.existing = LaunchOptions::Existing::Overwrite;
         return QString();
     }},
    {"ignore-load", nullptr, QT_TRANSLATE_NOOP("Lumavex", "Record on a busy machine too."),
     [](const QString&, LaunchOptions& options) {
         options.load = LaunchOptions::Load::Ignore;
         return QString();
     }},
    {"stats", "FILE", QT_TRANSLATE_NOOP("Lumavex", "While recording, write a line of JSON figures a second."),
     [](const QString& value, LaunchOptions& options) {
         options.stats = value;
         return value.isEmpty() ? AppText::tr("must name a file") : QString();
     }},
    {"list-cameras", nullptr, QT_TRANSLATE_NOOP("Lumavex", "Print the cameras' names and end."),
     applyList<LaunchOptions::List::Cameras>},
    {"list-windows", nullptr, QT_TRANSLATE_NOOP("Lumavex", "Print the windows' names, front to back, and end."),
     applyList<LaunchOptions::List::Windows>},
    {"list-sizes", nullptr,
     QT_TRANSLATE_NOOP("Lumavex", "Print the frame sizes offered on this screen and the camera's, and end."),
     applyList<LaunchOptions::List::Sizes>},
};

QString helpText()
{
    QString text = AppText::tr("Usage: lumavex [OPTION]...\n"
                               "Records the screen and a camera into a movie. Without options it opens its window.\n\n"
                               "These hold for this run and are not stored:\n");
    const auto line = [&text](const QString& left, const QString& help) {
        text += QStringLiteral("  %1 %2\n").arg(left, -22).arg(help);
    };
    for (const Option& option : optionTable) {
        const QString name = QStringLiteral("--") + QLatin1String(option.name);
        line(option.value ? name + u' ' + QLatin1String(option.value) : name, AppText::tr(option.help));
    }
    line(QStringLiteral("--help"), AppText::tr("Show this text and end."));
    line(QStringLiteral("--version"), AppText::tr("Show the version and end."));
    return text
           + AppText::tr("\nPlaces in the picture:\n"
                         "  0 top left      1 top centre      2 top right\n"
                         "  3 middle left   4 centre          5 middle right\n"
                         "  6 bottom left   7 bottom centre   8 bottom right\n"
                         "Sizes of the small picture, of the movie's width:\n"
                         "  0 an eighth   1 a quarter   2 a third   3 a half   4 all of it\n")
           + AppText::tr(
               "\nThe exit status is 0 when the movie or picture was saved (its path is printed), 1 when there is\n"
               "none, 2 when the options are wrong, 3 when the recording was kept, but not as asked: it ended\n"
               "early or lies elsewhere. SIGINT and SIGTERM end a recording early and save it.\n");
}

CommandLine mistake(const QString& what)
{
    return {{}, QStringLiteral("lumavex: ") + what + AppText::tr("\nTry \"lumavex --help\".\n"), 2};
}

/// Adds the usual extension to a name without one; returns a text to report.
QString completeOutput(QString& output)
{
    const QFileInfo file(output);
    if (output.isEmpty() || !file.suffix().isEmpty() || file.isDir())
        return {};
    const QString given = output;
    output += output.endsWith(u'.') ? QStringLiteral("mov") : QStringLiteral(".mov");
    return AppText::tr("%1 has no ending; the movie is saved as %2.").arg(given, output);
}

/// Applies the given values in the table's order; returns the first error, or an empty text.
QString applyValues(const QCommandLineParser& parser, LaunchOptions& options)
{
    for (const Option& option : optionTable) {
        const QString name = QLatin1String(option.name);
        if (!parser.isSet(name))
            continue;
        // Qt 6.8 warns on standard error when an option without a value is asked for it.
        const QString value = option.value ? parser.value(name) : QString();
        if (const QString problem = option.apply(value, options); !problem.isEmpty())
            return QStringLiteral("--%1 %2.").arg(name, problem);
    }
    return {};
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    for (const Option& option : optionTable)
        parser.addOption({QLatin1String(option.name), {}, QLatin1String(option.value)});
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringLiteral("version"));
    parser.addOptions({help, version});
    const bool understood = parser.parse(QStringList{QStringLiteral("lumavex")} + arguments);
    if (parser.isSet(help))
        return {{}, helpText(), 0};
    if (parser.isSet(version))
        return {{}, QStringLiteral("Lumavex " LUMAVEX_VERSION "\n"), 0};
    if (!understood)
        return mistake(parser.errorText());
    if (const QStringList stray = parser.positionalArguments(); !stray.isEmpty())
        return mistake(AppText::tr("%1 is not an option.").arg(stray.first()));

    CommandLine result;
    if (const QString problem = applyValues(parser, result.options); !problem.isEmpty())
        return mistake(problem);
    if (const QString problem = completeOptions(result.options); !problem.isEmpty())
        return mistake(problem);
    result.note = completeOutput(result.options.output);
    return result;
}

QString outputProblem(const LaunchOptions& options)
{
    const QFileInfo output(options.file());
    const QFileInfo folder(output.absolutePath());
    if (output.isDir())
        return AppText::tr("%1 is a folder; name a file in it.").arg(options.file());
    if (!folder.isDir())
        return AppText::tr("There is no folder %1 to save the file in.").arg(folder.filePath());
    if (!folder.isWritable())
        return AppText::tr("The folder %1 cannot be written to.").arg(folder.filePath());
    if (output.exists() && options.existing == LaunchOptions::Existing::Refuse)
        return AppText::tr("%1 exists already; add --overwrite to replace it.").arg(options.file());
    return {};
}

} // namespace lumavex
