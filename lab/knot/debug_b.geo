# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# What the service knows of a customer's network, and of the network of an operator who is no customer.

debug.halvik.example:
  - net: 198.18.7.20/32
    TXT: [ "\"server resolver-b.halvik.example\"", "\"organization 4711\"", "\"source 198.18.7.20\"" ]
  - net: 198.18.50.1/32
    TXT: [ "\"server resolver-b.halvik.example\"", "\"source 198.18.50.1\"" ]
