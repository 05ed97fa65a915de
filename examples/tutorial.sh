#!/bin/sh
# The tutorial's first program, built and run in this folder where the library is installed.
set -eu

c++ -std=c++17 read_product.cc $(pkg-config --cflags --libs KalvFileHandling) -o read_product
./read_product products/QK1_OPER_SEAHEIGHTS_20310412T060000_20310412T073000_0001.EOF
