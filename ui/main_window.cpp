// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "ui/main_window.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <utility>

#include "platform/event_loop/fatal_error.h"

namespace ui {

namespace {

void keepPlaceWhenHidden(QWidget& widget, bool isKept) {
  QSizePolicy policy = widget.sizePolicy();
  policy.setRetainSizeWhenHidden(isKept);
  widget.setSizePolicy(policy);
}

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

MainWindow::MainWindow(WindowActions pressed) : actions(std::move(pressed)) {
  setWindowFlags(Qt::Window);
  setAttribute(Qt::WA_QuitOnClose);
  setObjectName(QStringLiteral("window"));
  setWindowIcon(QIcon::fromTheme(QStringLiteral("halvik-diagnostic")));
  setUpFields();
  setUpRun();
  setUpResults();
  setUpButtons();
  arrange();
  accountField.setFocus();
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->key() == Qt::Key_Escape || (isReturn && focusWidget() == &resultsBrowser)) {
    event->ignore();
  } else {
    QDialog::keyPressEvent(event);
  }
}

void MainWindow::setUpFields() {
  setUpField(accountField, "account", QStringLiteral("optional"));
  setUpField(ticketField, "ticket", QStringLiteral("optional"));
  setUpField(domainField, "domain", QStringLiteral("optional, e.g. example.com"));
  startPush.setObjectName(QStringLiteral("start"));
  startPush.setDefault(true);
  startPush.installEventFilter(this);
  connectButton(startPush, [this] {
    takeFocusAway();
    keepPlaces(true);
    actions.start();
  });
}

void MainWindow::takeFocusAway() {
  QWidget* focused = focusWidget();
  focusedBefore = focused == &startPush ? &resultsBrowser : focused;
  // Otherwise the focus would go from each disabled widget to the next, and a screen reader would
  // read all of them.
  if (focused != nullptr) {
    focused->clearFocus();
  }
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::EnabledChange && startPush.isEnabled() && focusedBefore != nullptr) {
    // Later, since the fields are enabled and the results are shown after the button.
    QMetaObject::invokeMethod(
        focusedBefore, [this] { focusedBefore->setFocus(); }, Qt::QueuedConnection);
  }
  return QDialog::eventFilter(watched, event);
}

void MainWindow::setUpRun() {
  statusLabel.setObjectName(QStringLiteral("status"));
  // A line in every phase, so that the first text finds its place free.
  statusLabel.setText(QStringLiteral(" "));
  statusLabel.setTextFormat(Qt::PlainText);
  progressBar.setObjectName(QStringLiteral("progress"));
  progressBar.setAccessibleName(QStringLiteral("Progress"));
  progressBar.setTextVisible(false);
  keepPlaceWhenHidden(statusLabel, true);
  statusLabel.hide();
  progressBar.hide();
}

void MainWindow::setUpResults() {
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
  resultsBrowser.hide();
  QObject::connect(&resultsBrowser, &QTextBrowser::anchorClicked, &resultsBrowser,
                   [this](const QUrl& url) {
                     platform::guarded(
                         [&] { actions.openLink(url.toString(QUrl::FullyEncoded).toStdString()); });
                   });
}

void MainWindow::setUpButtons() {
  captionLabel.setObjectName(QStringLiteral("caption"));
  copyPush.setObjectName(QStringLiteral("copy"));
  openPush.setObjectName(QStringLiteral("open"));
  connectButton(copyPush, actions.copy);
  connectButton(openPush, actions.open);
  captionLabel.hide();
  copyPush.hide();
  openPush.hide();
}

void MainWindow::arrange() {
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
  auto* all = new QVBoxLayout(this);
  all->addWidget(&purposeLabel);
  all->addLayout(fields);
  all->addLayout(startRow);
  all->addWidget(&progressBar);
  all->addWidget(&resultsBrowser, 1);
  all->addLayout(linkRow);
  // Takes what a window that was enlarged before the first run has left over.
  all->addStretch();
  keepPlaces(true);
  const int width = sizeHint().width();
  keepPlaces(false);
  all->activate();
  // As low as it can be: the results are a line or two.
  resize(width, minimumSizeHint().height());
}

// Of the controls below the start button, so that nothing jumps when a later run hides them. The
// window grows when they have not yet had one.
void MainWindow::keepPlaces(bool areKept) {
  for (QWidget* widget : std::initializer_list<QWidget*>{&progressBar, &resultsBrowser,
                                                         &captionLabel, &copyPush, &openPush}) {
    keepPlaceWhenHidden(*widget, areKept);
  }
}

}  // namespace ui
