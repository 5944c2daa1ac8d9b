// SPDX-License-Identifier: GPL-3.0-or-later
//
// What leaves a plot: pictures, data, its menu and the form of an axis.
#include "app/ShownText.h"
#include "app/dialogs/Form.h"
#include "app/plots/PlotCanvas.h"
#include "app/plots/PlotWidget.h"

#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>

namespace qor {

namespace {

constexpr QSize LeastPicture(800, 500);
constexpr double PngScale = 2.0;
constexpr int PdfDotsPerInch = 96; ///< a logical pixel of the screen

/// The plot as it leaves the program: light, named, dated.
class CPicture {
  public:
    CPicture(const CTheme& theme, const PlotPage& page, PlotView view, QSize size)
        : Canvas(theme, Look::Light), Size(size.expandedTo(LeastPicture)) {
        view.cursor.reset();
        view.anchor.reset();
        Canvas.resize(Size);
        Canvas.setViewport(QRect(QPoint(0, 0), Size));
        Canvas.Show(page, view);
        QString foot = Shown(page.station);
        if (!page.stamp.empty())
            foot += (foot.isEmpty() ? QString() : QStringLiteral("    ")) + Shown(page.stamp);
        Canvas.AddTitle(Shown(page.title), foot);
    }

    QImage Image() { return Canvas.toPixmap(Size.width(), Size.height(), PngScale).toImage(); }

    QByteArray Png() {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        Image().save(&buffer, "PNG");
        return bytes;
    }

    QByteArray Svg(const QString& title) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QSvgGenerator generator;
        generator.setOutputDevice(&buffer);
        generator.setSize(Size);
        generator.setViewBox(QRect(QPoint(0, 0), Size));
        generator.setTitle(title);
        Paint(generator);
        return bytes;
    }

    QByteArray Pdf(const QString& title) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QPdfWriter writer(&buffer);
        writer.setTitle(title);
        writer.setResolution(PdfDotsPerInch);
        writer.setPageMargins(QMarginsF());
        writer.setPageSize(QPageSize(QSizeF(Size) * 72.0 / PdfDotsPerInch, QPageSize::Point, {},
                                     QPageSize::ExactMatch));
        Paint(writer);
        return bytes;
    }

  private:
    void Paint(QPaintDevice& device) {
        QCPPainter painter(&device);
        painter.setMode(QCPPainter::pmVectorized);
        painter.setMode(QCPPainter::pmNoCaching);
        painter.fillRect(QRect(QPoint(0, 0), Size), QColor(Canvas.Colours().base));
        Canvas.toPainter(&painter, Size.width(), Size.height());
    }

    CPlotCanvas Canvas;
    QSize Size;
};

} // namespace

QImage CPlotWidget::Picture() const {
    return CPicture(Theme, Current, *View, Drawn->size()).Image();
}

bool CPlotWidget::SaveFile(const QString& path, QString& fault) const {
    CPicture picture(Theme, Current, *View, Drawn->size());
    const QString title = Shown(Current.title);
    const QString ending = QFileInfo(path).suffix().toLower();
    QByteArray bytes;
    if (ending == QLatin1String("svg"))
        bytes = picture.Svg(title);
    else if (ending == QLatin1String("pdf"))
        bytes = picture.Pdf(title);
    else if (ending == QLatin1String("png"))
        bytes = picture.Png();
    else if (ending == QLatin1String("csv"))
        bytes = QByteArray::fromStdString(VisibleData());
    else {
        fault = tr("\"%1\" cannot be written: its name must end in .png, .svg, .pdf or .csv.")
                    .arg(path);
        return false;
    }
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    fault = tr("\"%1\" could not be written: %2.").arg(path, file.errorString());
    return false;
}

void CPlotWidget::CopyPicture() const {
    QGuiApplication::clipboard()->setImage(Picture());
}

std::string CPlotWidget::VisibleData() const {
    return VisibleCsv(Current, View->key, Off);
}

void CPlotWidget::CopyData() const {
    QGuiApplication::clipboard()->setText(Shown(VisibleData()));
}

Menu CPlotWidget::CurvesMenu() {
    Menu curves;
    for (const PlotCurve& curve : Current.curves)
        curves.push_back({curve.title, [this, id = curve.id] { ToggleCurve(id); }, true,
                          !Off.contains(curve.id)});
    return curves;
}

Menu CPlotWidget::PlotMenu() {
    const auto text = [](const QString& translated) { return translated.toStdString(); };
    Menu menu{{text(tr("Pause")), [this] { SetPaused(!Paused); }, true, Paused}};
    MenuEntry reset{text(tr("Reset zoom and limits")), [this] { ResetView(); }};
    if (!IsZoomed())
        reset.whyNot = text(tr("nothing was changed"));
    menu.push_back(std::move(reset));
    Menu limits{{text(tr("Automatic limits")), [this] { SetAutomatic(); }}};
    limits.push_back({text(ShownInLanguage(AxisTitle(KeyAxis(Current))) + QStringLiteral(" ...")),
                      [this] { AskRange(KeyAxisNumber); }});
    const auto ask = [this](const AxisName& name) {
        return [this, name] {
            if (const std::optional<int> shown = NumberOf(name))
                AskRange(*shown);
        };
    };
    for (int axis = 0; axis < static_cast<int>(ValueAxisCount(Current)); ++axis)
        limits.push_back({text(ShownInLanguage(AxisTitle(AxisOf(axis))) + QStringLiteral(" ...")),
                          ask(NameOf(axis))});
    menu.push_back({text(tr("Limits")), {}, false, false, {}, std::move(limits)});
    menu.push_back(
        {text(tr("Logarithmic axis")), [this] { ToggleLog(); }, true, AxisOf(0).logarithmic});
    if (Menu curves = CurvesMenu(); curves.size() > 1)
        menu.push_back({text(tr("Curves")), {}, false, false, {}, std::move(curves)});
    menu.push_back(
        {text(tr("Cursor")),
         [this] { SetCursor(Mode == CursorMode::Off ? CursorMode::On : CursorMode::Off); }, true,
         Mode != CursorMode::Off});
    menu.push_back({text(tr("Difference from the cursor")),
                    [this] {
                        SetCursor(Mode == CursorMode::Difference ? CursorMode::On
                                                                 : CursorMode::Difference);
                    },
                    true, Mode == CursorMode::Difference});
    menu.push_back({});
    menu.push_back({text(tr("Copy picture")), [this] { CopyPicture(); }});
    menu.push_back({text(tr("Copy visible data")), [this] { CopyData(); }});
    menu.push_back({text(tr("Save picture or data ...")), [this] { emit ExportAsked(); }});
    return menu;
}

void CPlotWidget::AskRange(int number) {
    const PlotAxis axis = AxisOf(number);
    const PlotRange range = ShownRange(number);
    auto* form = new CForm(Theme, tr("Limits of %1").arg(ShownInLanguage(AxisTitle(axis))), this);
    auto fields = std::make_shared<std::pair<QLineEdit*, QLineEdit*>>();
    const auto limit = [axis, range, fields](const QLineEdit* field) {
        const double before = field == fields->first ? range.lower : range.upper;
        return field ? ParseLimit(axis, field->text().toStdString(), before) : std::nullopt;
    };
    const auto none = axis.kind == AxisKind::Time ? tr("Give a time as hh:mm:ss, of another day "
                                                       "as YYYY-MM-DD hh:mm:ss.")
                      : axis.logarithmic          ? tr("Give a number above 0.")
                                                  : tr("Give a number.");
    fields->first = form->AddText(tr("From"), Shown(LimitText(axis, range.lower, range)), [=] {
        return limit(fields->first) ? std::string() : none.toStdString();
    });
    fields->second = form->AddText(tr("To"), Shown(LimitText(axis, range.upper, range)), [=] {
        const auto lower = limit(fields->first), upper = limit(fields->second);
        if (!upper)
            return none.toStdString();
        return lower && !IsRange(*lower, *upper)
                   ? tr("Give more than in the first field.").toStdString()
                   : std::string();
    });
    QCheckBox* logarithmic = axis.kind == AxisKind::Number
                                 ? form->AddSwitch(tr("Logarithmic"), axis.logarithmic)
                                 : nullptr;
    const AxisName name = NameOf(number); // the number may be another's once the form is done
    connect(form->AddButton(tr("Automatic")), &QPushButton::clicked, form, [this, form, name] {
        ChangeChoice(name, [](AxisChoice& choice) { choice.mode = AxisMode::Automatic; });
        form->reject();
    });
    connect(form, &QDialog::accepted, this, [=, this] {
        ChangeChoice(name, [&](AxisChoice& choice) {
            choice.mode = AxisMode::Fixed;
            choice.minimum = limit(fields->first).value_or(range.lower);
            choice.maximum = limit(fields->second).value_or(range.upper);
            if (logarithmic)
                choice.logarithmic = logarithmic->isChecked();
        });
    });
    form->Open();
}

std::optional<int> CPlotWidget::NumberOf(const AxisName& name) const {
    for (int axis = KeyAxisNumber; axis < static_cast<int>(ValueAxisCount(Current)); ++axis)
        if (NameOf(axis) == name)
            return axis;
    return std::nullopt;
}

void CPlotWidget::ChangeChoice(const AxisName& name,
                               const std::function<void(AxisChoice&)>& change) {
    const std::optional<int> axis = NumberOf(name);
    if (!axis) // Decided: limits given for an axis that has gone meanwhile are dropped.
        return;
    AxisChoice choice = Choice(*axis);
    change(choice);
    SetChoice(*axis, choice);
    emit ViewChanged();
}

} // namespace qor
