// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Linked with the libraries of the program and does nothing: what the loading of these costs.

int main() {
  return 0;
}
