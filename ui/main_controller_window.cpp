// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The window's side of a run.

#include "app/main_controller.h"
#include "ui/links.h"

namespace app {

void MainController::enableUI() {
  buttonStartTests.send(&ui::Button::setEnabled, true);
  textHalvikAccount.send(&ui::TextField::setEnabled, true);
  textTicketNo.send(&ui::TextField::setEnabled, true);
  textDomainToTest.send(&ui::TextField::setEnabled, true);
}

void MainController::disableUI() {
  buttonStartTests.send(&ui::Button::setEnabled, false);
  textHalvikAccount.send(&ui::TextField::setEnabled, false);
  textTicketNo.send(&ui::TextField::setEnabled, false);
  textDomainToTest.send(&ui::TextField::setEnabled, false);
}

void MainController::showProgress() {
  updateProgress();
  textResultsLinkView.send(&ui::ScrollView::setHidden, true);
  textCopyPaste.send(&ui::Label::setHidden, true);
  textStatus.send(&ui::Label::setHidden, false);
  progressIndicator.send(&ui::ProgressBar::setHidden, false);
  progressIndicator.send(&ui::ProgressBar::setAnimated, true);
  copyToClipBoardLink.send(&ui::Button::setHidden, true);
  shareButton.send(&ui::Button::setHidden, true);
}

void MainController::hideProgress() {
  textStatus.send(&ui::Label::setHidden, true);
  progressIndicator.send(&ui::ProgressBar::setAnimated, false);
  progressIndicator.send(&ui::ProgressBar::setHidden, true);
  copyToClipBoardLink.send(&ui::Button::setHidden, false);
  // Shown after a failed upload as well, when there may be no URL of this run.
  shareButton.send(&ui::Button::setHidden, false);
}

void MainController::setTextView(const ui::Outlet<ui::RichTextView>& view,
                                 const std::string& text) {
  view.send(&ui::RichTextView::setString, text);
  hiliteAndActivateURLs(view);
}

void MainController::hiliteAndActivateURLs(const ui::Outlet<ui::RichTextView>& view) {
  const std::u16string text = view.ask(&ui::RichTextView::string).value_or(std::u16string());
  view.send(&ui::RichTextView::addLinks, ui::findLinks(text));
}

void MainController::copyToClipBoardLinkButtonPressed() {
  desktop.send(&platform::Desktop::copyToClipboard, resultsUrl);
}

void MainController::shareButtonPressed() {
  desktop.send(&platform::Desktop::openUrl, resultsUrl);
}

}  // namespace app
