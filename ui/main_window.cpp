// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/main_window.h"

#include <QDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

#include "platform/desktop/qt_url.h"
#include "platform/event_loop/fatal_error.h"
#include "ui/widget_controls.h"

namespace ui {

namespace {

// A dialog, because only dialogs have a default button, with the frame of an ordinary window.
class Frame final : public QDialog {
 public:
  Frame() {
    setWindowFlags(Qt::Window);
    setAttribute(Qt::WA_QuitOnClose);
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    // Escape would close the window and with it a run.
    if (event->key() == Qt::Key_Escape) {
      event->ignore();
    } else {
      QDialog::keyPressEvent(event);
    }
  }
};

// Gives the keyboard back after a run to where it was before: while the fields and the button are
// disabled, nothing has the focus, and whoever works by keyboard would have to find the window's
// first field again.
class FocusKeeper final : public QObject {
 public:
  explicit FocusKeeper(QPushButton& start) : QObject(&start) { start.installEventFilter(this); }

  void remember(QWidget* focused) { before = focused; }

  bool eventFilter(QObject* watched, QEvent* event) override {
    const auto* start = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::EnabledChange && start->isEnabled() && before != nullptr) {
      // Later, since the other fields are enabled after the button.
      QMetaObject::invokeMethod(
          before, [this] { before->setFocus(); }, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  QPointer<QWidget> before;
};

void keepPlaceWhenHidden(QWidget& widget) {
  QSizePolicy policy = widget.sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  widget.setSizePolicy(policy);
  widget.hide();
}

// A field whose hint can be read: Qt's is half as strong as its text, too faint for many.
class Field final : public QLineEdit {
 public:
  Field() { strengthenHint(); }

 protected:
  void changeEvent(QEvent* event) override {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
      strengthenHint();
    }
  }

 private:
  void strengthenHint() {
    constexpr float strength = 0.65F;
    QPalette colors = palette();
    QColor hint = colors.color(QPalette::Text);
    hint.setAlphaF(strength);
    if (colors.color(QPalette::PlaceholderText) != hint) {
      colors.setColor(QPalette::PlaceholderText, hint);
      setPalette(colors);
    }
  }
};

void setUpField(QLineEdit& field, const char* name, const QString& placeholder) {
  field.setObjectName(QLatin1String(name));
  field.setPlaceholderText(placeholder);
  field.setMinimumWidth(field.fontMetrics().averageCharWidth() * 48);
}

void connectButton(QPushButton& button, const std::function<void()>& action) {
  QObject::connect(&button, &QPushButton::clicked, &button,
                   [action] { platform::guarded(action); });
}

}  // namespace

class MainWindow::Parts {
 public:
  explicit Parts(WindowActions pressed) : actions(std::move(pressed)) {
    frame.setObjectName(QStringLiteral("window"));
    frame.setWindowIcon(QIcon::fromTheme(QStringLiteral("halvik-diagnostic")));
    setUpFields();
    setUpRun();
    setUpResults();
    setUpButtons();
    arrange();
    orderFocus();
  }

  WindowActions actions;
  Frame frame;
  QLabel purposeLabel{QStringLiteral(
      "Runs network tests on this computer and sends\nwhat they print to Halvik support.")};
  Field accountField;
  Field ticketField;
  Field domainField;
  QPushButton startPush{QStringLiteral("&Start tests")};
  QLabel statusLabel;
  GlidingProgressBar progressBar;
  QTextBrowser resultsBrowser;
  QLabel captionLabel{QStringLiteral("Send this link to Halvik support:")};
  QPushButton copyPush{QStringLiteral("&Copy link")};
  QPushButton openPush{QStringLiteral("&Open link")};

  WidgetTextField account{accountField};
  WidgetTextField ticket{ticketField};
  WidgetTextField domain{domainField};
  WidgetButton start{startPush};
  WidgetLabel status{statusLabel};
  WidgetProgressBar progress{progressBar};
  WidgetScrollView resultsScroll{resultsBrowser};
  WidgetRichTextView results{resultsBrowser};
  WidgetLabel caption{captionLabel};
  WidgetButton copy{copyPush};
  WidgetButton open{openPush};
  WidgetWindow window{frame};

 private:
  void setUpFields() {
    setUpField(accountField, "account", QStringLiteral("optional"));
    setUpField(ticketField, "ticket", QStringLiteral("optional"));
    setUpField(domainField, "domain", QStringLiteral("optional, e.g. example.com"));
    startPush.setObjectName(QStringLiteral("start"));
    startPush.setDefault(true);
    auto* focus = new FocusKeeper(startPush);
    connectButton(startPush, [this, focus] {
      focus->remember(frame.focusWidget());
      actions.start();
    });
  }

  void setUpRun() {
    statusLabel.setObjectName(QStringLiteral("status"));
    // A line in every phase, so that the first text finds its place free.
    statusLabel.setText(QStringLiteral(" "));
    statusLabel.setTextFormat(Qt::PlainText);
    progressBar.setObjectName(QStringLiteral("progress"));
    progressBar.setAccessibleName(QStringLiteral("Progress"));
    progressBar.setTextVisible(false);
    keepPlaceWhenHidden(statusLabel);
    keepPlaceWhenHidden(progressBar);
  }

  void setUpResults() {
    resultsBrowser.setObjectName(QStringLiteral("results"));
    resultsBrowser.setAccessibleName(QStringLiteral("Results"));
    resultsBrowser.setOpenLinks(false);
    resultsBrowser.setTabChangesFocus(true);
    // A long address has no blank to break a line at.
    resultsBrowser.setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    resultsBrowser.setMinimumHeight(resultsBrowser.fontMetrics().lineSpacing() * 8);
    QPalette palette = resultsBrowser.palette();
    palette.setColor(QPalette::Base, QColor(0x16, 0x16, 0x16));
    palette.setColor(QPalette::Text, Qt::white);
    resultsBrowser.setPalette(palette);
    keepPlaceWhenHidden(resultsBrowser);
    QObject::connect(
        &resultsBrowser, &QTextBrowser::anchorClicked, &resultsBrowser, [this](const QUrl& url) {
          platform::guarded([&] { actions.openLink(platform::encodedText(url).toStdString()); });
        });
  }

  void setUpButtons() {
    captionLabel.setObjectName(QStringLiteral("caption"));
    copyPush.setObjectName(QStringLiteral("copy"));
    openPush.setObjectName(QStringLiteral("open"));
    connectButton(copyPush, actions.copy);
    connectButton(openPush, actions.open);
    keepPlaceWhenHidden(captionLabel);
    keepPlaceWhenHidden(copyPush);
    keepPlaceWhenHidden(openPush);
  }

  void arrange() {
    // Layouts are owned by the window they are set on.
    auto* fields = new QFormLayout;
    fields->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    fields->addRow(QStringLiteral("Halvik &account:"), &accountField);
    fields->addRow(QStringLiteral("Support &ticket:"), &ticketField);
    fields->addRow(QStringLiteral("&Domain to test:"), &domainField);
    auto* startRow = new QHBoxLayout;
    startRow->addWidget(&statusLabel, 1);
    startRow->addWidget(&startPush);
    auto* linkRow = new QHBoxLayout;
    linkRow->addWidget(&captionLabel, 1);
    linkRow->addWidget(&copyPush);
    linkRow->addWidget(&openPush);
    auto* all = new QVBoxLayout(&frame);
    all->addWidget(&purposeLabel);
    all->addLayout(fields);
    all->addLayout(startRow);
    all->addWidget(&progressBar);
    all->addWidget(&resultsBrowser, 1);
    all->addLayout(linkRow);
    // As low as it can be: the results are a line or two. Whoever wants to see more makes it
    // larger.
    frame.resize(frame.sizeHint().width(), frame.minimumSizeHint().height());
  }

  void orderFocus() {
    const std::initializer_list<QWidget*> order{&accountField, &ticketField,    &domainField,
                                                &startPush,    &resultsBrowser, &copyPush,
                                                &openPush};
    for (const auto* widget = order.begin(); widget + 1 != order.end(); ++widget) {
      QWidget::setTabOrder(*widget, *(widget + 1));
    }
    accountField.setFocus();
  }
};

MainWindow::MainWindow(WindowActions pressed)
    : parts(std::make_unique<Parts>(std::move(pressed))) {}

MainWindow::~MainWindow() = default;

void MainWindow::show() {
  parts->frame.show();
}

TextField& MainWindow::account() {
  return parts->account;
}

TextField& MainWindow::ticket() {
  return parts->ticket;
}

TextField& MainWindow::domain() {
  return parts->domain;
}

Button& MainWindow::startButton() {
  return parts->start;
}

Label& MainWindow::status() {
  return parts->status;
}

ProgressBar& MainWindow::progress() {
  return parts->progress;
}

ScrollView& MainWindow::resultsScroll() {
  return parts->resultsScroll;
}

RichTextView& MainWindow::results() {
  return parts->results;
}

Label& MainWindow::caption() {
  return parts->caption;
}

Button& MainWindow::copyButton() {
  return parts->copy;
}

Button& MainWindow::openButton() {
  return parts->open;
}

Window& MainWindow::window() {
  return parts->window;
}

}  // namespace ui
