#include "engines/print/CupsQueue.h"

#include "engines/print/CupsLibrary.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace zib {

namespace {

constexpr int kConnectTimeoutMs = 10'000;
constexpr double kAnswerTimeoutS = 10.0;
constexpr int kPiece = 65'536; ///< Bytes sent in one go.
constexpr double kHundredthMm = 0.01;
const QSizeF kA4(210, 297);
const QSizeF kLetter(215.9, 279.4);
constexpr double kUsualMarginMm = 6.35;

/// Gives up a connection that no longer answers.
int giveUp(http_t*, void*)
{
    return 0;
}

/// A password is never asked for: there is nobody behind the terminal.
const char* noPassword(const char*, http_t*, const char*, const char*, void*)
{
    return nullptr;
}

QString lastError()
{
    return QString::fromUtf8(cupsLastErrorString()).trimmed();
}

Failure noAnswer(const QString& why)
{
    return {Failure::Kind::NotFound, QStringLiteral("The printing system does not answer: %1.").arg(why)};
}

/// Why there is no default printer: the system knows none, or the connection broke before it could say.
Failure noDefault(http_t* http)
{
    if (const int error = httpError(http))
        return noAnswer(QString::fromLocal8Bit(strerror(error)));
    return {Failure::Kind::NotFound,
            QStringLiteral("There is no default printer. Choose one in the desktop's printer settings, then "
                           "print again.")};
}

Paper usualPaper()
{
    const bool metric = QLocale::system().measurementSystem() == QLocale::MetricSystem;
    return {metric ? kA4 : kLetter,
            QMarginsF(kUsualMarginMm, kUsualMarginMm, kUsualMarginMm, kUsualMarginMm)};
}

/// A length in an answer of the printing system, in millimetres; nothing when it is not there.
std::optional<double> lengthOf(ipp_t* collection, const char* name)
{
    ipp_attribute_t* length = ippFindAttribute(collection, name, IPP_TAG_INTEGER);
    return length ? std::optional<double>(ippGetInteger(length, 0) * kHundredthMm) : std::nullopt;
}

/// Takes size and margins from a description of paper (PWG 5100.7), as far as it gives them.
void readMedia(ipp_t* media, Paper& paper)
{
    if (ipp_attribute_t* size = ippFindAttribute(media, "media-size", IPP_TAG_BEGIN_COLLECTION)) {
        const double width = lengthOf(ippGetCollection(size, 0), "x-dimension").value_or(0);
        const double height = lengthOf(ippGetCollection(size, 0), "y-dimension").value_or(0);
        if (width > 0 && height > 0)
            paper.size = QSizeF(width, height);
    }
    paper.margins = QMarginsF(lengthOf(media, "media-left-margin").value_or(paper.margins.left()),
                              lengthOf(media, "media-top-margin").value_or(paper.margins.top()),
                              lengthOf(media, "media-right-margin").value_or(paper.margins.right()),
                              lengthOf(media, "media-bottom-margin").value_or(paper.margins.bottom()));
}

/// The size of a paper by any of its names; nothing for an unknown one.
QSizeF namedSize(const QString& name)
{
    const QByteArray text = name.toUtf8();
    pwg_media_t* media = nullptr;
    for (const auto* lookUp : {&pwgMediaForPWG, &pwgMediaForLegacy, &pwgMediaForPPD})
        if (!media && !text.isEmpty())
            media = (*lookUp)(text.constData());
    return media ? QSizeF(media->width, media->length) * kHundredthMm : QSizeF();
}

/// Saved options that change the size or the place of what is printed, or leave the one page out. They are
/// meant for documents; a label must come out as it is.
constexpr std::array kLayoutOptions{"booklet",
                                    "fit-to-page",
                                    "fitplot",
                                    "imposition-template",
                                    "job-pages-per-set",
                                    "landscape",
                                    "mirror",
                                    "natural-scaling",
                                    "number-up",
                                    "number-up-layout",
                                    "orientation-requested",
                                    "page-border",
                                    "page-bottom",
                                    "page-left",
                                    "page-ranges",
                                    "page-right",
                                    "page-set",
                                    "page-top",
                                    "position",
                                    "ppi",
                                    "print-scaling",
                                    "scaling",
                                    "x-image-position",
                                    "x-image-shift",
                                    "x-side1-image-shift",
                                    "y-image-position",
                                    "y-image-shift",
                                    "y-side1-image-shift"};

bool changesLayout(const char* option)
{
    return std::any_of(kLayoutOptions.begin(), kLayoutOptions.end(),
                       [option](const char* name) { return qstricmp(name, option) == 0; });
}

/// The options of a job: the user's own for this printer, and those that keep every length true, also where
/// the queue's own defaults would not.
class JobOptions
{
public:
    explicit JobOptions(const cups_dest_t* dest)
    {
        for (int i = 0; i < dest->num_options; ++i)
            if (!changesLayout(dest->options[i].name))
                add(dest->options[i].name, dest->options[i].value);
        add("print-scaling", "none");
        add("number-up", "1");
        add("page-ranges", "1-1");
        add("page-set", "all");
        add("orientation-requested", "3"); // Portrait (RFC 8011, 5.2.10).
        add("page-border", "none");
        add("mirror", "false");
        add("fit-to-page", "false");
        add("landscape", "false");
    }
    ~JobOptions() { cupsFreeOptions(m_count, m_options); }
    Q_DISABLE_COPY_MOVE(JobOptions)

    int count() const { return m_count; }
    cups_option_t* data() const { return m_options; }

private:
    void add(const char* name, const char* value)
    {
        m_count = cupsAddOption(name, value, m_count, &m_options);
    }

    int m_count = 0;
    cups_option_t* m_options = nullptr;
};

Failure::Kind kindOf(ipp_status_t status)
{
    switch (status) {
    case IPP_STATUS_ERROR_FORBIDDEN:
    case IPP_STATUS_ERROR_NOT_AUTHENTICATED:
    case IPP_STATUS_ERROR_NOT_AUTHORIZED:
        return Failure::Kind::NoPermission;
    case IPP_STATUS_ERROR_NOT_ACCEPTING_JOBS:
        return Failure::Kind::Busy;
    case IPP_STATUS_ERROR_NOT_FOUND:
        return Failure::Kind::NotFound;
    default:
        return Failure::Kind::WriteFailed;
    }
}

} // namespace

CupsQueue::CupsQueue(http_t* http, cups_dest_t* dest, cups_dinfo_t* info)
    : m_http(http), m_dest(dest), m_info(info)
{
}

CupsQueue::~CupsQueue()
{
    cupsFreeDestInfo(m_info);
    cupsFreeDests(1, m_dest);
    httpClose(m_http);
}

Outcome<std::shared_ptr<CupsQueue>> CupsQueue::openDefault()
{
    if (const QString trouble = cupsLibrary.trouble(); !trouble.isEmpty())
        return Failure{Failure::Kind::Unsupported, trouble};
    cupsSetPasswordCB2(noPassword, nullptr);
    http_t* http = httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
                                kConnectTimeoutMs, nullptr);
    if (!http) // errno tells of the closing only
        return noAnswer(lastError());
    httpSetTimeout(http, kAnswerTimeoutS, giveUp, nullptr);
    cups_dest_t* dest = cupsGetNamedDest(http, nullptr, nullptr);
    if (!dest) {
        const Failure failure = noDefault(http);
        httpClose(http);
        return failure;
    }
    return std::shared_ptr<CupsQueue>(new CupsQueue(http, dest, cupsCopyDestInfo(http, dest)));
}

Outcome<> CupsQueue::ready() const
{
    if (option("printer-state").toInt() != IPP_PSTATE_STOPPED)
        return {};
    const QString message = stateMessage();
    const QString why = message.isEmpty() ? QString() : QStringLiteral(": ") + message;
    return Failure{Failure::Kind::Unsupported,
                   QStringLiteral("The printer \"%1\" is stopped%2.").arg(name(), why)};
}

Paper CupsQueue::paper() const
{
    Paper paper = usualPaper();
    ipp_attribute_t* standard = m_info ? cupsFindDestDefault(m_http, m_dest, m_info, "media-col") : nullptr;
    if (standard)
        readMedia(ippGetCollection(standard, 0), paper);
    if (const QSizeF chosen = namedSize(option(CUPS_MEDIA)); !chosen.isEmpty())
        paper.size = chosen;
    return paper;
}

Outcome<> CupsQueue::send(const QString& jobName, const QByteArray& pdf)
{
    cupsSetPasswordCB2(noPassword, nullptr); // Each thread has its own.
    if (!m_info)
        return refusal();
    const JobOptions options(m_dest);
    int job = 0;
    const ipp_status_t created = cupsCreateDestJob(m_http, m_dest, m_info, &job, jobName.toUtf8().constData(),
                                                   options.count(), options.data());
    if (created > IPP_STATUS_OK_EVENTS_COMPLETE)
        return refusal();
    if (sendDocument(job, jobName, pdf))
        return {};
    const Failure failure = refusal();
    cupsCancelDestJob(m_http, m_dest, job);
    return failure;
}

QString CupsQueue::option(const char* name) const
{
    return QString::fromUtf8(cupsGetOption(name, m_dest->num_options, m_dest->options));
}

/// The queue's own words on its state, for example "Paused"; nothing when it says none.
QString CupsQueue::stateMessage() const
{
    const char* const wanted = "printer-state-message";
    ipp_t* request = ippNewRequest(IPP_OP_GET_PRINTER_ATTRIBUTES);
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr,
                 option("printer-uri-supported").toUtf8().constData());
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", nullptr, wanted);
    ipp_t* answer = cupsDoRequest(m_http, request, "/");
    ipp_attribute_t* message = ippFindAttribute(answer, wanted, IPP_TAG_TEXT);
    const QString text = message ? QString::fromUtf8(ippGetString(message, 0, nullptr)).trimmed() : QString();
    ippDelete(answer);
    return text;
}

QString CupsQueue::name() const
{
    return QString::fromUtf8(m_dest->name);
}

/// The last error of the printing system, as a sentence that names the printer.
Failure CupsQueue::refusal() const
{
    QString words = lastError();
    while (words.endsWith(u'.'))
        words.chop(1);
    return {kindOf(cupsLastError()),
            QStringLiteral("The printer \"%1\" did not take the job: %2.").arg(name(), words)};
}

bool CupsQueue::sendDocument(int job, const QString& jobName, const QByteArray& pdf)
{
    const JobOptions options(m_dest);
    if (cupsStartDestDocument(m_http, m_dest, m_info, job, jobName.toUtf8().constData(), CUPS_FORMAT_PDF,
                              options.count(), options.data(), 1) != HTTP_STATUS_CONTINUE)
        return false;
    for (qsizetype at = 0; at < pdf.size(); at += kPiece) {
        const auto length = static_cast<size_t>(std::min<qsizetype>(kPiece, pdf.size() - at));
        if (cupsWriteRequestData(m_http, pdf.constData() + at, length) != HTTP_STATUS_CONTINUE)
            return false;
    }
    return cupsFinishDestDocument(m_http, m_dest, m_info) <= IPP_STATUS_OK_EVENTS_COMPLETE;
}

} // namespace zib
